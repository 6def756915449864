// RecordWriter: short containers, those with the same keys and types gathered in one block with a
// column for each key; every container once. Containers are known by the number in which they were
// first met until the file's numbers are given. One thread.
#pragma once

#include "engine/scenefile/Entry.h"
#include "engine/scenefile/HashIndex.h"

namespace engine::scenefile {

// Containers of one shape and one depth of nesting.
struct RecordBlock {
  std::uint32_t height = 0;
  std::vector<std::int32_t> keys;
  std::vector<std::int32_t> types;
  Column ownIds;
  std::vector<Column> columns;       // one a key
  std::vector<std::uint32_t> first;  // the containers, as first met

  bool HasShape(std::uint32_t nesting, std::span<const Entry> entries) const;
  bool HoldsAt(std::size_t row, std::int32_t ownId, std::span<const Entry> entries) const;
  void Append(std::uint32_t container, std::int32_t ownId, std::span<const Entry> entries);
  void Put(std::string& out, std::span<const std::uint32_t> numbers) const;
};

class RecordWriter {
 public:
  // The equal container met before, or `candidate`, which is stored.
  std::uint32_t FindOrAdd(std::uint32_t candidate, std::uint32_t height, std::int32_t ownId,
                          std::span<const Entry> entries);
  const std::vector<RecordBlock>& Blocks() const { return blocks_; }

 private:
  struct Place {
    std::uint32_t container;
    std::uint32_t block;
    std::uint32_t row;
  };
  bool IsAt(std::uint32_t place, std::int32_t ownId, std::span<const Entry> entries) const {
    return blocks_[places_[place].block].HoldsAt(places_[place].row, ownId, entries);
  }
  std::uint32_t BlockFor(std::uint32_t height, std::span<const Entry> entries);

  std::vector<RecordBlock> blocks_;
  std::vector<Place> places_;
  HashIndex blockIndex_;
  HashIndex placeIndex_;
  std::uint32_t lastBlock_ = 0;
  // Behind the place found last: states name the same containers in the same order
  std::size_t expected_ = 0;
};

}  // namespace engine::scenefile
