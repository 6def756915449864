#include "host/GeData.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "engine/core/ContainerBody.h"
#include "engine/core/ContainerContents.h"
#include "engine/core/Value.h"

namespace engine {

namespace {

std::uint64_t MakeNumbers(host::Real x, host::Real y, host::Real z) {
  auto* block = new NumberBlock;
  std::copy_n(std::initializer_list<host::Real>{x, y, z}.begin(), 3, block->numbers);
  return BitsOf(block);
}

void ReleaseNumbers(NumberBlock* block) {
  if (block->owners.Release()) delete block;
}

}  // namespace

void RetainShared(Value value) {
  if (value.type == host::DA_CONTAINER) {
    RetainBody(BlockOf<ContainerBody>(value.bits));
  } else if (value.type >= host::DA_STRING) {
    TextBlock::Retain(BlockOf<TextBlock>(value.bits));
  } else {
    BlockOf<NumberBlock>(value.bits)->owners.Retain();
  }
}

void ReleaseShared(Value value) {
  if (value.type == host::DA_CONTAINER) {
    ReleaseBody(BlockOf<ContainerBody>(value.bits));
  } else if (value.type >= host::DA_STRING) {
    TextBlock::Release(BlockOf<TextBlock>(value.bits));
  } else {
    ReleaseNumbers(BlockOf<NumberBlock>(value.bits));
  }
}

bool BoolOf(Value value) {
  return value.type == host::DA_REAL ? RealOf(value) != 0 : LongOf(value) != 0;
}

host::LONG LongOf(Value value) {
  if (value.type == host::DA_LONG) return static_cast<host::LONG>(value.bits);
  return value.type == host::DA_REAL ? TruncatedLong(std::bit_cast<host::Real>(value.bits)) : 0;
}

host::Real RealOf(Value value) {
  if (value.type == host::DA_REAL) return std::bit_cast<host::Real>(value.bits);
  return value.type == host::DA_LONG ? static_cast<host::LONG>(value.bits) : 0;
}

host::Vector VectorOf(Value value) {
  if (value.type != host::DA_VECTOR) return host::Vector();
  const host::Real* numbers = BlockOf<NumberBlock>(value.bits)->numbers;
  return host::Vector(numbers[0], numbers[1], numbers[2]);
}

host::BaseTime TimeOf(Value value) {
  if (value.type != host::DA_TIME) return host::BaseTime();
  const host::Real* numbers = BlockOf<NumberBlock>(value.bits)->numbers;
  return host::BaseTime(numbers[0], numbers[1]);
}

host::String StringOf(Value value) {
  return value.type == host::DA_STRING ? TextBlock::Share(BlockOf<TextBlock>(value.bits))
                                       : host::String();
}

host::Filename FilenameOf(Value value) {
  if (value.type != host::DA_FILENAME) return host::Filename();
  return host::Filename(TextBlock::Share(BlockOf<TextBlock>(value.bits)));
}

NodeId LinkOf(const host::GeData& value) {
  const Value stored = ValueAccess::Of(value);
  return stored.type == host::DA_ALIASLINK ? stored.bits : 0;
}

host::GeData LinkValue(NodeId target) { return ValueAccess::Adopt({host::DA_ALIASLINK, target}); }

}  // namespace engine

namespace host {

using engine::Value;
using engine::ValueAccess;

GeData::GeData(LONG value) : bits_(engine::BitsOf(value)), type_(DA_LONG) {}
GeData::GeData(Real value) : bits_(engine::BitsOf(value)), type_(DA_REAL) {}
GeData::GeData(const Vector& value)
    : bits_(engine::MakeNumbers(value.x, value.y, value.z)), type_(DA_VECTOR) {}
GeData::GeData(const BaseTime& value)
    : bits_(engine::MakeNumbers(value.GetNumerator(), value.GetDenominator(), 0)), type_(DA_TIME) {}
GeData::GeData(const String& value)
    : bits_(engine::BitsOf(engine::TextBlock::Of(value))), type_(DA_STRING) {
  engine::Retain(ValueAccess::Of(*this));
}
GeData::GeData(const CHAR* value) : GeData(String(value)) {}
GeData::GeData(const Filename& value) : GeData(value.GetString()) { type_ = DA_FILENAME; }
GeData::GeData(const BaseContainer& value)
    : bits_(engine::BitsOf(engine::ContainerAccess::Body(value))), type_(DA_CONTAINER) {
  engine::Retain(ValueAccess::Of(*this));
}
GeData::GeData(const GeData& other) : bits_(other.bits_), type_(other.type_) {
  engine::Retain(ValueAccess::Of(*this));
}
GeData::GeData(GeData&& other) noexcept
    : bits_(std::exchange(other.bits_, 0)), type_(std::exchange(other.type_, DA_NIL)) {}
GeData::~GeData() { engine::Release(ValueAccess::Of(*this)); }

GeData& GeData::operator=(const GeData& other) { return *this = GeData(other); }

GeData& GeData::operator=(GeData&& other) noexcept {
  std::swap(bits_, other.bits_);
  std::swap(type_, other.type_);
  return *this;
}

Bool GeData::GetBool() const { return engine::BoolOf(ValueAccess::Of(*this)); }
LONG GeData::GetLong() const { return engine::LongOf(ValueAccess::Of(*this)); }
Real GeData::GetReal() const { return engine::RealOf(ValueAccess::Of(*this)); }
Vector GeData::GetVector() const { return engine::VectorOf(ValueAccess::Of(*this)); }
BaseTime GeData::GetTime() const { return engine::TimeOf(ValueAccess::Of(*this)); }
String GeData::GetString() const { return engine::StringOf(ValueAccess::Of(*this)); }
Filename GeData::GetFilename() const { return engine::FilenameOf(ValueAccess::Of(*this)); }

BaseContainer GeData::GetContainer() const {
  const Value value = ValueAccess::Of(*this);
  return value.type == DA_CONTAINER
             ? engine::ContainerAccess::Share(engine::BlockOf<engine::ContainerBody>(value.bits))
             : BaseContainer();
}

Bool GeData::operator==(const GeData& other) const {
  return engine::SameValues(ValueAccess::Of(*this), ValueAccess::Of(other),
                            engine::OwnIds::kIgnored);
}

LONG BaseTime::GetFrame(Real rate) const {
  // At its own rate a frame is exact, without the way through seconds.
  const Real frame = denominator_ != 0 && denominator_ == rate ? numerator_ : Get() * rate;
  return engine::TruncatedLong(std::round(frame));
}

}  // namespace host
