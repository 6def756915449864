// ContainerBlocks: the blocks that section VALUES is made of: records (short containers of one
// shape, a column for each key), lists (long containers one by one) and patches (a long container
// as the changes of an earlier one); see "Containers" in docs/SCENE_FILE.md. The writers keep every
// container once and know it by the number in which it was first met until the file's numbers are
// given. One thread.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "engine/scenefile/Columns.h"
#include "engine/scenefile/HashIndex.h"
#include "host/GeData.h"

namespace engine {

// One entry of a container as the file knows it: key, type and a 64-bit word that stands for the
// value.
struct CodedEntry {
  std::int32_t key;
  std::int32_t type;
  std::uint64_t word;
  bool operator==(const CodedEntry&) const = default;
};

// Containers with more entries are stored one by one, as lists or patches.
inline constexpr std::size_t kWidestRecord = 64;

enum class BlockKind : std::uint8_t { Records = 1, List = 2, Patch = 3 };

// All types of values, ascending.
inline constexpr host::LONG kValueTypes[] = {
    host::DA_NIL,    host::DA_LONG,     host::DA_REAL,      host::DA_TIME,     host::DA_VECTOR,
    host::DA_STRING, host::DA_FILENAME, host::DA_CONTAINER, host::DA_ALIASLINK};

// Numbers as columns hold them: sign extended.
inline std::uint64_t Extended(std::int32_t value) {
  return static_cast<std::uint64_t>(static_cast<std::int64_t>(value));
}

// Words of one type. Containers are stored by `numbers[word]`.
void PutTyped(std::string& out, host::LONG type, std::span<const std::uint64_t> words,
              std::span<const std::uint32_t> numbers);
// Types, then a column for each type that occurs.
void PutEntryValues(std::string& out, std::span<const CodedEntry> entries,
                    std::span<const std::uint32_t> numbers);

// Containers of one shape and one depth of nesting.
struct RecordBlock {
  std::uint32_t height = 0;
  std::vector<std::int32_t> keys;
  std::vector<std::int32_t> types;
  ColumnValues ownIds;
  std::vector<ColumnValues> columns;  // one a key
  std::vector<std::uint32_t> first;   // the containers, as first met

  bool HasShape(std::uint32_t nesting, std::span<const CodedEntry> entries) const;
  bool HoldsAt(std::size_t row, std::int32_t ownId, std::span<const CodedEntry> entries) const;
  void Append(std::uint32_t container, std::int32_t ownId, std::span<const CodedEntry> entries);
  void Put(std::string& out, std::span<const std::uint32_t> numbers) const;
};

class RecordWriter {
 public:
  // The equal container met before, or `candidate`, which is stored.
  std::uint32_t FindOrAdd(std::uint32_t candidate, std::uint32_t height, std::int32_t ownId,
                          std::span<const CodedEntry> entries);
  const std::vector<RecordBlock>& Blocks() const { return blocks_; }

 private:
  struct Place {
    std::uint32_t container;
    std::uint32_t block;
    std::uint32_t row;
  };
  bool IsAt(std::uint32_t place, std::int32_t ownId, std::span<const CodedEntry> entries) const {
    return blocks_[places_[place].block].HoldsAt(places_[place].row, ownId, entries);
  }
  std::uint32_t BlockFor(std::uint32_t height, std::span<const CodedEntry> entries);

  std::vector<RecordBlock> blocks_;
  std::vector<Place> places_;
  HashIndex blockIndex_;
  HashIndex placeIndex_;
  std::uint32_t lastBlock_ = 0;
  // Behind the place found last: states name the same containers in the same order
  std::size_t expected_ = 0;
};

struct ListBlock {
  std::uint32_t height = 0;
  std::uint32_t container = 0;  // as first met
  std::int32_t ownId = 0;
  std::vector<CodedEntry> entries;
  std::optional<std::uint32_t> base;  // the list that this one is a patch of
};

class ListWriter {
 public:
  // The equal container met before, or `candidate`, which is stored. `height` becomes that of the
  // base where that is deeper.
  std::uint32_t FindOrAdd(std::uint32_t candidate, std::uint32_t& height, std::int32_t ownId,
                          std::span<const CodedEntry> entries);
  const std::vector<ListBlock>& Blocks() const { return blocks_; }
  void Put(std::string& out, const ListBlock& block, std::span<const std::uint32_t> numbers) const;

 private:
  std::optional<std::uint32_t> BaseFor(std::span<const CodedEntry> entries) const;
  void PutPatch(std::string& out, const ListBlock& block,
                std::span<const std::uint32_t> numbers) const;

  std::vector<ListBlock> blocks_;
  HashIndex index_;
};

}  // namespace engine
