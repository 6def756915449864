// Values as containers store them: a type number and 64 bits, which hold a number, a link, or the
// address of a counted block. A value here owns nothing by itself: whoever stores the bits retains
// and releases them.
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

#include "engine/core/SharedReference.h"
#include "engine/core/TextBlock.h"
#include "host/BaseContainer.h"

namespace engine {

static_assert(sizeof(void*) == sizeof(std::uint64_t) && sizeof(host::GeData) == 16);

struct Value {
  host::LONG type = host::DA_NIL;
  std::uint64_t bits = 0;
};

// The numbers of a vector or, in the first two, of a time.
struct NumberBlock {
  SharedCount owners;
  host::Real numbers[3] = {0, 0, 0};
};

template <class T>
std::uint64_t BitsOf(T* block) {
  return std::bit_cast<std::uint64_t>(block);
}
inline std::uint64_t BitsOf(host::LONG number) {
  return std::bit_cast<std::uint64_t>(static_cast<std::int64_t>(number));
}
inline std::uint64_t BitsOf(host::Real number) { return std::bit_cast<std::uint64_t>(number); }

// Not by std::bit_cast, behind which the static analysis takes the whole block for uninitialized.
template <class T>
T* BlockOf(std::uint64_t bits) {
  return reinterpret_cast<T*>(bits);
}

// True for the types whose bits are the address of a counted block: time, vector, texts, container.
inline bool IsShared(host::LONG type) {
  return type >= host::DA_TIME && type <= host::DA_CONTAINER;
}

void RetainShared(Value value);
void ReleaseShared(Value value);
inline void Retain(Value value) {
  if (IsShared(value.type)) RetainShared(value);
}
inline void Release(Value value) {
  if (IsShared(value.type)) ReleaseShared(value);
}

// The number without its fraction; NaN is 0, what lies outside of LONG is the nearer end.
inline host::LONG TruncatedLong(host::Real value) {
  if (std::isnan(value)) return 0;
  if (value <= std::numeric_limits<host::LONG>::min())
    return std::numeric_limits<host::LONG>::min();
  if (value >= std::numeric_limits<host::LONG>::max())
    return std::numeric_limits<host::LONG>::max();
  return static_cast<host::LONG>(value);
}

// The getters of the interface on bare values: a type that does not fit gives the default.
bool BoolOf(Value value);
host::LONG LongOf(Value value);
host::Real RealOf(Value value);
host::Vector VectorOf(Value value);
host::BaseTime TimeOf(Value value);
host::String StringOf(Value value);
host::Filename FilenameOf(Value value);

// The way into GeData.
struct ValueAccess {
  static Value Of(const host::GeData& data) { return {data.type_, data.bits_}; }
  // Takes the caller's share.
  static host::GeData Adopt(Value value) {
    host::GeData data;
    data.type_ = value.type;
    data.bits_ = value.bits;
    return data;
  }
  static host::GeData Share(Value value) {
    Retain(value);
    return Adopt(value);
  }
  // Forgets the value without releasing it.
  static Value Give(host::GeData& data) {
    const Value value = Of(data);
    data.type_ = host::DA_NIL;
    data.bits_ = 0;
    return value;
  }
};

// A value that owns one share until it goes.
class OwnedValue {
 public:
  explicit OwnedValue(Value value) : value_(value) { Retain(value_); }
  OwnedValue(const OwnedValue&) = delete;
  OwnedValue& operator=(const OwnedValue&) = delete;
  ~OwnedValue() { Release(value_); }

 private:
  Value value_;
};

}  // namespace engine
