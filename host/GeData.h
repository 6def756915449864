// GeData: one value of one of the container types. It owns a share of what it holds (texts,
// containers) and is cheap to copy. A link is held as the identity of its target and owns nothing.
#pragma once

#include "host/Filename.h"
#include "host/Math.h"
#include "host/String.h"

namespace engine {
struct ValueAccess;
}

namespace host {

class BaseContainer;
class BaseDocument;
class BaseList2D;

// Type numbers of values. They are stored in scene files.
inline constexpr LONG DA_NIL = 0;
inline constexpr LONG DA_LONG = 15;
inline constexpr LONG DA_REAL = 19;
inline constexpr LONG DA_TIME = 22;
inline constexpr LONG DA_VECTOR = 23;
inline constexpr LONG DA_STRING = 130;
inline constexpr LONG DA_FILENAME = 131;
inline constexpr LONG DA_CONTAINER = 132;
inline constexpr LONG DA_ALIASLINK = 133;

class GeData {
 public:
  // Nil.
  GeData() = default;
  // A Bool goes in as LONG 0 or 1. The text of a null CHAR pointer is the empty one.
  GeData(LONG value);
  GeData(Real value);
  GeData(const Vector& value);
  GeData(const BaseTime& value);
  GeData(const String& value);
  GeData(const CHAR* value);
  GeData(const Filename& value);
  GeData(const BaseContainer& value);
  // A link to `target`; null makes a null link, which is a value too.
  GeData(const BaseList2D* target);
  GeData(const GeData& other);
  GeData(GeData&& other) noexcept;
  GeData& operator=(const GeData& other);
  GeData& operator=(GeData&& other) noexcept;
  ~GeData();

  // One of the DA_ numbers.
  LONG GetType() const { return type_; }

  // A getter of an unfitting type answers the default of its type (0, empty). GetLong of a REAL
  // truncates, GetReal of a LONG converts, GetBool is "not 0".
  Bool GetBool() const;
  LONG GetLong() const;
  Real GetReal() const;
  Vector GetVector() const;
  BaseTime GetTime() const;
  String GetString() const;
  Filename GetFilename() const;
  BaseContainer GetContainer() const;
  // The target if it lives in `doc`, else null; see BaseContainer::GetLink. Not owned by the
  // caller, and dead when that element is freed: ask again rather than keep it.
  BaseList2D* GetLink(const BaseDocument* doc) const;

  // Same type and value; containers compare as BaseContainer does.
  Bool operator==(const GeData& other) const;
  Bool operator!=(const GeData& other) const { return !(*this == other); }

 private:
  friend struct engine::ValueAccess;
  // The number, the link, or the address of a counted block: text, path, container, vector, time
  ULLONG bits_ = 0;
  LONG type_ = DA_NIL;
};

}  // namespace host
