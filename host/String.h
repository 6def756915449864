// String: an immutable-until-written text value, cheap to copy. Text is UTF-8 outside and counted
// by characters (code points) inside; a byte that is not valid UTF-8 counts as one character and is
// kept as it is. Copies share their text and split on write. Any thread may hold its own copy.
#pragma once

#include <string>
#include <string_view>

#include "host/Types.h"

namespace engine {
struct TextBlock;
}

namespace host {

class String {
 public:
  // The empty text. Costs no memory.
  String() = default;
  // The text up to the first NUL; null is the empty text.
  String(const CHAR* utf8);
  // The whole view, NULs included.
  explicit String(std::string_view utf8);
  String(const String& other);
  String(String&& other) noexcept;
  String& operator=(const String& other);
  String& operator=(String&& other) noexcept;
  ~String();

  // Length in characters.
  LONG GetLength() const;
  // True when the text has at least one character. Constant time, while GetLength counts: ask this
  // for "is it empty".
  Bool Content() const;

  // 0 only for equal texts, else negative or positive; case-sensitive, by code point.
  LONG Compare(const String& other) const;

  // The text inserted before character `pos`; a position outside [0, length] is moved to the nearer
  // end.
  void Insert(LONG pos, const String& text);
  // Removes `count` characters from `pos` on (0-based), as far as they exist.
  void Delete(LONG pos, LONG count);
  // `count` characters from `start` on (0-based); what lies outside is left out.
  String SubStr(LONG start, LONG count) const;
  // Position (in characters, 0-based) of the first or last occurrence into `*pos`; false leaves it
  // as it was.
  Bool FindFirst(const String& text, LONG* pos, LONG start = 0) const;
  Bool FindLast(const String& text, LONG* pos) const;

  // The leading number of the text; 0 where there is none. Never follows the locale. White space
  // and a plus sign may precede it. What is too large for a LONG gives the nearest one.
  LONG ToLong() const;
  Real ToReal() const;

  String& operator+=(const String& other);
  friend String operator+(const String& a, const String& b);
  Bool operator==(const String& other) const;
  Bool operator!=(const String& other) const { return !(*this == other); }
  Bool operator<(const String& other) const { return Compare(other) < 0; }
  Bool operator>(const String& other) const { return Compare(other) > 0; }

  // The bytes of the text. The view is valid until this String is changed or destroyed.
  std::string_view View() const;
  std::string ToUtf8() const { return std::string(View()); }

 private:
  friend struct engine::TextBlock;
  engine::TextBlock* text_ = nullptr;
};

// Decimal text of a whole number.
String LongToString(LONG value);

// Decimal text of a real number with '.' as separator, never the locale's comma. `digits` before
// and `places` after the point: -1 takes as many as are needed, and the default counts give the
// shortest text that reads back as the same number (0.713 gives "0.713"). `fill` pads missing
// leading digits.
String RealToString(Real value, LONG digits = -1, LONG places = -1, Bool exponent = FALSE,
                    CHAR fill = '0');

}  // namespace host
