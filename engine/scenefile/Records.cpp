#include "engine/scenefile/Records.h"

#include <xxhash.h>

namespace engine::scenefile {

bool RecordBlock::HasShape(std::uint32_t nesting, std::span<const Entry> entries) const {
  if (height != nesting || keys.size() != entries.size()) return false;
  for (std::size_t i = 0; i < entries.size(); ++i)
    if (keys[i] != entries[i].key || types[i] != entries[i].type) return false;
  return true;
}

bool RecordBlock::HoldsAt(std::size_t row, std::int32_t ownId,
                          std::span<const Entry> entries) const {
  if (ownIds[row] != Extended(ownId) || !HasShape(height, entries)) return false;
  for (std::size_t i = 0; i < entries.size(); ++i)
    if (columns[i][row] != entries[i].word) return false;
  return true;
}

void RecordBlock::Append(std::uint32_t container, std::int32_t ownId,
                         std::span<const Entry> entries) {
  first.push_back(container);
  ownIds.push_back(Extended(ownId));
  for (std::size_t i = 0; i < entries.size(); ++i) columns[i].push_back(entries[i].word);
}

void RecordBlock::Put(std::string& out, std::span<const std::uint32_t> numbers) const {
  out.push_back(static_cast<char>(BlockKind::Records));
  PutVarint(out, first.size());
  PutVarint(out, keys.size());
  Column column;
  for (const std::int32_t key : keys) column.push_back(Extended(key));
  PutInts(out, column);
  column.clear();
  for (const std::int32_t type : types) column.push_back(Extended(type));
  PutInts(out, column);
  PutInts(out, ownIds);
  for (std::size_t i = 0; i < columns.size(); ++i) PutTyped(out, types[i], columns[i], numbers);
}

std::uint32_t RecordWriter::FindOrAdd(std::uint32_t candidate, std::uint32_t height,
                                      std::int32_t ownId, std::span<const Entry> entries) {
  if (expected_ < places_.size() && IsAt(static_cast<std::uint32_t>(expected_), ownId, entries))
    return places_[expected_++].container;
  const std::uint64_t hash =
      XXH3_64bits_withSeed(entries.data(), entries.size_bytes(), Extended(ownId));
  const auto next = static_cast<std::uint32_t>(places_.size());
  const std::uint32_t at = placeIndex_.FindOrAdd(
      hash, next, [&](std::uint32_t place) { return IsAt(place, ownId, entries); });
  expected_ = at + std::size_t{1};
  if (at != next) return places_[at].container;
  const std::uint32_t block = BlockFor(height, entries);
  places_.push_back({candidate, block, static_cast<std::uint32_t>(blocks_[block].first.size())});
  blocks_[block].Append(candidate, ownId, entries);
  return candidate;
}

std::uint32_t RecordWriter::BlockFor(std::uint32_t height, std::span<const Entry> entries) {
  if (lastBlock_ < blocks_.size() && blocks_[lastBlock_].HasShape(height, entries))
    return lastBlock_;
  std::uint64_t hash = height;
  for (const Entry& entry : entries) {
    const std::int32_t shape[] = {entry.key, entry.type};
    hash = XXH3_64bits_withSeed(shape, sizeof shape, hash);
  }
  const auto next = static_cast<std::uint32_t>(blocks_.size());
  lastBlock_ = blockIndex_.FindOrAdd(
      hash, next, [&](std::uint32_t at) { return blocks_[at].HasShape(height, entries); });
  if (lastBlock_ != next) return lastBlock_;
  RecordBlock& block = blocks_.emplace_back();
  block.height = height;
  block.columns.resize(entries.size());
  for (const Entry& entry : entries) {
    block.keys.push_back(entry.key);
    block.types.push_back(entry.type);
  }
  return lastBlock_;
}

}  // namespace engine::scenefile
