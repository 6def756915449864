// Numbers from and to text, always with '.', whatever the locale.
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <string>

#include "host/String.h"

namespace host {

namespace {

constexpr int kMostPlaces = 340;

Bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// The text from its leading number on: without white space and a plus sign. Empty where no number
// starts.
std::string_view NumberPart(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
  if (text.starts_with('+')) text.remove_prefix(text.starts_with("+-") ? text.size() : 1);
  const std::size_t digits = text.starts_with('-') ? 1 : 0;
  const bool point = text.size() > digits + 1 && text[digits] == '.' && IsDigit(text[digits + 1]);
  return text.size() > digits && (IsDigit(text[digits]) || point) ? text : std::string_view();
}

// A number that a Real cannot hold: too near to 0 or too far away. Decided by the place of its
// first digit.
Real OutOfRange(std::string_view number) {
  const bool negative = number.starts_with('-');
  if (negative) number.remove_prefix(1);
  LLONG place = 0;
  const std::size_t end = std::min(number.find_first_of("eE"), number.size());
  if (end + 1 < number.size()) {
    const char* first = number.data() + end + 1 + (number[end + 1] == '+' ? 1 : 0);
    const auto read = std::from_chars(first, number.data() + number.size(), place);
    if (read.ec == std::errc::result_out_of_range)
      return *first == '-' ? 0 : std::copysign(HUGE_VAL, negative ? -1 : 1);
  }
  const std::string_view mantissa = number.substr(0, end);
  const auto point = static_cast<LLONG>(std::min(mantissa.find('.'), mantissa.size()));
  const auto digit =
      static_cast<LLONG>(std::min(mantissa.find_first_not_of("0."), mantissa.size()));
  if (place + point - digit < 0) return 0;
  return std::copysign(HUGE_VAL, negative ? -1 : 1);
}

std::string Digits(Real value, LONG places, Bool exponent) {
  std::array<char, 2 * kMostPlaces + 32> buffer;
  char* const end = buffer.data() + buffer.size();
  const Real size = std::fabs(value);
  const bool readable = value == 0 || (size >= 1e-7 && size < 1e21);
  const bool plain = !exponent && (places >= 0 || readable || !std::isfinite(value));
  const auto format = plain ? std::chars_format::fixed : std::chars_format::scientific;
  const auto written =
      places < 0 ? std::to_chars(buffer.data(), end, value, format)
                 : std::to_chars(buffer.data(), end, value, format, std::min(places, kMostPlaces));
  return std::string(buffer.data(), written.ptr);
}

// Missing leading digits, behind the sign where they are zeros and before it where they are
// anything else.
void Pad(std::string& text, LONG digits, CHAR fill) {
  const std::size_t sign = text.starts_with('-') ? 1 : 0;
  const std::size_t whole =
      std::min(text.find_first_not_of("0123456789", sign), text.size()) - sign;
  const auto wanted = static_cast<std::size_t>(std::clamp(digits, 0, kMostPlaces));
  if (fill != '\0' && whole < wanted) text.insert(fill == '0' ? sign : 0, wanted - whole, fill);
}

}  // namespace

String LongToString(LONG value) { return String(std::string_view(std::to_string(value))); }

String RealToString(Real value, LONG digits, LONG places, Bool exponent, CHAR fill) {
  std::string text = Digits(value, places, exponent);
  if (std::isfinite(value)) Pad(text, digits, fill);
  return String(std::string_view(text));
}

LONG String::ToLong() const {
  const std::string_view number = NumberPart(View());
  LONG value = 0;
  const auto read = std::from_chars(number.data(), number.data() + number.size(), value);
  if (read.ec != std::errc::result_out_of_range) return value;
  return number.starts_with('-') ? std::numeric_limits<LONG>::min()
                                 : std::numeric_limits<LONG>::max();
}

Real String::ToReal() const {
  const std::string_view number = NumberPart(View());
  Real value = 0;
  const auto read = std::from_chars(number.data(), number.data() + number.size(), value);
  return read.ec == std::errc::result_out_of_range
             ? OutOfRange(number.substr(0, read.ptr - number.data()))
             : value;
}

}  // namespace host
