#include "engine/scenefile/ContainerReader.h"

#include <algorithm>

namespace engine {
namespace {

using host::BaseContainer;
using host::LONG;

// About what a container and an entry take in memory.
constexpr std::uint64_t kContainerBytes = 64;
constexpr std::uint64_t kEntryBytes = 24;
// Bytes that a change of one entry of a long container may copy at most.
constexpr std::uint64_t kChangeBytes = 8192;
// Containers that hold an equal one twice, whose parts do so again, and so on, are short in a file
// and endless to compare: no container may have more entries than this, counted down to the deepest
// and as often as they occur.
constexpr std::uint64_t kMostEntries = std::uint64_t{1} << 33;

}  // namespace

ContainerReader::ContainerReader(std::string_view contents, const std::vector<host::String>& texts,
                                 const Numbers& numbers, Budget& budget)
    : in_(contents, "VALUES", budget),
      texts_(texts),
      vectors_(numbers.vectors.begin(), numbers.vectors.end()),
      times_(numbers.times.begin(), numbers.times.end()) {}

std::vector<BaseContainer> ContainerReader::Read() {
  // Not believed: each block is refused where it brings more than are left of the number.
  expected_ = in_.Varint();
  containers_.emplace_back();
  sizes_.push_back(0);
  while (containers_.size() <= expected_) {
    const std::uint8_t kind = in_.Byte();
    if (kind == static_cast<std::uint8_t>(BlockKind::Records))
      ReadRecords();
    else if (kind == static_cast<std::uint8_t>(BlockKind::List))
      ReadList();
    else if (kind == static_cast<std::uint8_t>(BlockKind::Patch))
      ReadPatch();
    else
      in_.Refuse("no block begins there");
  }
  in_.End();
  return std::move(containers_);
}

void ContainerReader::ReadRecords() {
  const std::size_t rows = in_.Rows(kContainerBytes);
  const std::size_t width =
      static_cast<std::size_t>(in_.Below(kWidestRecord + 1, "the number of keys"));
  if (rows == 0 || rows > expected_ + 1 - containers_.size())
    in_.Refuse("a block holds none or more containers than announced");
  const ColumnValues keys = Keys(width);
  const ColumnValues types = Types(width);
  const ColumnValues ownIds = TakeInts(in_, rows);
  CheckLongs(in_, ownIds, "an own ID");
  std::vector<ColumnValues> columns;
  for (const std::uint64_t type : types) columns.push_back(Words(static_cast<LONG>(type), rows));
  in_.Memory().Charge(rows * width, kEntryBytes);
  for (std::size_t row = 0; row < rows; ++row) {
    BaseContainer container(static_cast<LONG>(ownIds[row]));
    std::uint64_t size = 0;
    for (std::size_t i = 0; i < width; ++i) {
      const auto type = static_cast<LONG>(types[i]);
      size = SizeWith(size, type, columns[i][row]);
      ContainerAccess::Set(container, static_cast<LONG>(keys[i]), ValueOf(type, columns[i][row]));
    }
    Keep(std::move(container), width, size);
  }
}

// Setting the entries one by one builds the container as a program would have, so that its form in
// memory is the same as before it was written.
void ContainerReader::ReadList() {
  const std::size_t size = in_.Rows(kEntryBytes);
  BaseContainer container(in_.Long("an own ID"));
  const ColumnValues keys = Keys(size);
  Values values = TakeValues(size);
  std::uint64_t total = 0;
  for (std::size_t i = 0; i < size; ++i)
    ContainerAccess::Set(container, static_cast<LONG>(keys[i]), NextOf(values, i, total));
  Keep(std::move(container), size, total);
}

// A copy of the base is changed, so that both share in memory what they share in the file.
void ContainerReader::ReadPatch() {
  const auto base = static_cast<std::size_t>(in_.Below(containers_.size(), "the base of a patch"));
  BaseContainer container = containers_[base];
  container.SetId(in_.Long("an own ID"));
  const std::size_t changes = in_.Rows(kEntryBytes);
  const std::size_t added = in_.Rows(kEntryBytes);
  const auto size = static_cast<std::size_t>(container.GetCount());
  ChargePatch(size, changes, added);
  const ColumnValues positions = TakeInts(in_, changes);
  CheckBelow(in_, positions, size, "a position in a patch");
  if (std::ranges::adjacent_find(positions, std::greater_equal<>()) != positions.end())
    in_.Refuse("positions of a patch do not rise");
  const ColumnValues keys = Keys(added);
  Values values = TakeValues(changes + added);
  std::uint64_t total = sizes_[base];
  for (std::size_t i = 0; i < changes + added; ++i) {
    const LONG key = i < changes ? container.GetIndexId(static_cast<LONG>(positions[i]))
                                 : static_cast<LONG>(keys[i - changes]);
    ContainerAccess::Set(container, key, NextOf(values, i, total));
  }
  // Setting a value compares it with the one that is there, down to the deepest entry.
  in_.Memory().Charge(total - sizes_[base]);
  Keep(std::move(container), size + added, total);
}

// A copy shares what is not changed; its table of parts and the changed parts are its own.
void ContainerReader::ChargePatch(std::size_t size, std::size_t changes, std::size_t added) {
  const std::uint64_t whole = size * kEntryBytes;
  in_.Memory().Charge(size / 4 + std::min(whole, changes * kChangeBytes) +
                      (added > 0 ? size * 4 : 0) + kContainerBytes);
}

ColumnValues ContainerReader::Keys(std::size_t rows) {
  ColumnValues keys = TakeInts(in_, rows);
  CheckLongs(in_, keys, "a key");
  return keys;
}

ColumnValues ContainerReader::Types(std::size_t rows) {
  ColumnValues types = TakeInts(in_, rows);
  for (const std::uint64_t type : types) {
    if (type > static_cast<std::uint64_t>(host::DA_ALIASLINK) ||
        std::ranges::find(kValueTypes, static_cast<LONG>(type)) == std::end(kValueTypes))
      in_.Refuse("there is no type of value " + Grouped(type));
  }
  return types;
}

// A checked column. Containers are those read so far, so that none can hold itself. The caller has
// passed the type through Types.
ColumnValues ContainerReader::Words(LONG type, std::size_t rows) {
  if (type == host::DA_NIL) {
    in_.Memory().Charge(rows, sizeof(std::uint64_t));
    return ColumnValues(rows);
  }
  if (type == host::DA_REAL) return TakeWords(in_, rows);
  ColumnValues words = TakeInts(in_, rows);
  if (type == host::DA_LONG) CheckLongs(in_, words, "a number");
  if (type == host::DA_TIME) CheckBelow(in_, words, times_.size(), "a time");
  if (type == host::DA_VECTOR) CheckBelow(in_, words, vectors_.size(), "a vector");
  if (type == host::DA_STRING || type == host::DA_FILENAME)
    CheckBelow(in_, words, texts_.size(), "a text");
  if (type == host::DA_CONTAINER) CheckBelow(in_, words, containers_.size(), "a container");
  return words;
}

ContainerReader::Values ContainerReader::TakeValues(std::size_t rows) {
  Values values;
  values.types = Types(rows);
  for (const LONG type : kValueTypes) {
    const auto count = static_cast<std::size_t>(
        std::ranges::count(values.types, static_cast<std::uint64_t>(type)));
    if (count > 0) values.columns.emplace_back(type, Words(type, count));
  }
  values.taken.assign(values.columns.size(), 0);
  return values;
}

Value ContainerReader::NextOf(Values& values, std::size_t position, std::uint64_t& size) {
  const auto type = static_cast<LONG>(values.types[position]);
  std::size_t at = 0;
  while (values.columns[at].first != type) ++at;
  const std::uint64_t word = values.columns[at].second[values.taken[at]++];
  size = SizeWith(size, type, word);
  return ValueOf(type, word);
}

std::uint64_t ContainerReader::SizeWith(std::uint64_t size, LONG type, std::uint64_t word) const {
  const std::uint64_t inner =
      type == host::DA_CONTAINER ? sizes_[static_cast<std::size_t>(word)] : 0;
  // Held at one more than is allowed, so that it never wraps around.
  return std::min(size + inner + 1, kMostEntries + 1);
}

Value ContainerReader::ValueOf(LONG type, std::uint64_t word) const {
  const auto row = static_cast<std::size_t>(word);
  switch (type) {
    case host::DA_TIME:
      return ValueAccess::Of(times_[row]);
    case host::DA_VECTOR:
      return ValueAccess::Of(vectors_[row]);
    case host::DA_STRING:
    case host::DA_FILENAME:
      return {type, engine::BitsOf(TextBlock::Of(texts_[row]))};
    case host::DA_CONTAINER:
      return {type, engine::BitsOf(ContainerAccess::Body(containers_[row]))};
    default:
      return {type, word};
  }
}

void ContainerReader::Keep(BaseContainer container, std::size_t entries, std::uint64_t size) {
  // Setting a key a second time has replaced the first one.
  if (static_cast<std::size_t>(container.GetCount()) != entries)
    in_.Refuse("a container has a key twice");
  if (size > kMostEntries) in_.Refuse("containers in containers multiply beyond all measure");
  containers_.push_back(std::move(container));
  sizes_.push_back(size);
}

}  // namespace engine
