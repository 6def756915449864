#include "engine/scenefile/ContainerBlocks.h"

#include <xxhash.h>
#include <algorithm>

namespace engine {

void PutTyped(std::string& out, host::LONG type, std::span<const std::uint64_t> words,
              std::span<const std::uint32_t> numbers) {
  if (type == host::DA_NIL) return;
  if (type == host::DA_REAL) return PutWords(out, words);
  if (type != host::DA_CONTAINER) return PutInts(out, words);
  ColumnValues numbered(words.size());
  for (std::size_t i = 0; i < words.size(); ++i) numbered[i] = numbers[words[i]];
  PutInts(out, numbered);
}

void PutEntryValues(std::string& out, std::span<const CodedEntry> entries,
                    std::span<const std::uint32_t> numbers) {
  ColumnValues column;
  for (const CodedEntry& entry : entries) column.push_back(Extended(entry.type));
  PutInts(out, column);
  for (const host::LONG type : kValueTypes) {
    column.clear();
    for (const CodedEntry& entry : entries)
      if (entry.type == type) column.push_back(entry.word);
    if (!column.empty()) PutTyped(out, type, column, numbers);
  }
}

bool RecordBlock::HasShape(std::uint32_t nesting, std::span<const CodedEntry> entries) const {
  if (height != nesting || keys.size() != entries.size()) return false;
  for (std::size_t i = 0; i < entries.size(); ++i)
    if (keys[i] != entries[i].key || types[i] != entries[i].type) return false;
  return true;
}

bool RecordBlock::HoldsAt(std::size_t row, std::int32_t ownId,
                          std::span<const CodedEntry> entries) const {
  if (ownIds[row] != Extended(ownId) || !HasShape(height, entries)) return false;
  for (std::size_t i = 0; i < entries.size(); ++i)
    if (columns[i][row] != entries[i].word) return false;
  return true;
}

void RecordBlock::Append(std::uint32_t container, std::int32_t ownId,
                         std::span<const CodedEntry> entries) {
  first.push_back(container);
  ownIds.push_back(Extended(ownId));
  for (std::size_t i = 0; i < entries.size(); ++i) columns[i].push_back(entries[i].word);
}

void RecordBlock::Put(std::string& out, std::span<const std::uint32_t> numbers) const {
  out.push_back(static_cast<char>(BlockKind::Records));
  PutVarint(out, first.size());
  PutVarint(out, keys.size());
  ColumnValues column;
  for (const std::int32_t key : keys) column.push_back(Extended(key));
  PutInts(out, column);
  column.clear();
  for (const std::int32_t type : types) column.push_back(Extended(type));
  PutInts(out, column);
  PutInts(out, ownIds);
  for (std::size_t i = 0; i < columns.size(); ++i) PutTyped(out, types[i], columns[i], numbers);
}

// The record expected next is tried before anything is hashed: a further Stagemark mostly names
// what the one before it does, in its order. The own ID is the seed, since it counts here as a
// value does.
std::uint32_t RecordWriter::FindOrAdd(std::uint32_t candidate, std::uint32_t height,
                                      std::int32_t ownId, std::span<const CodedEntry> entries) {
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

// Records come in long rows of one shape, so the block used last is tried first.
std::uint32_t RecordWriter::BlockFor(std::uint32_t height, std::span<const CodedEntry> entries) {
  if (lastBlock_ < blocks_.size() && blocks_[lastBlock_].HasShape(height, entries))
    return lastBlock_;
  std::uint64_t hash = height;
  for (const CodedEntry& entry : entries) {
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
  for (const CodedEntry& entry : entries) {
    block.keys.push_back(entry.key);
    block.types.push_back(entry.type);
  }
  return lastBlock_;
}

namespace {

// How many earlier lists are tried as a base, and at which part of changed entries a list is no
// patch any more.
constexpr std::size_t kBasesTried = 8;
constexpr std::size_t kPatchShare = 8;

// Keys at equal places, and few changes; entries more at the end count as changes. A list that
// became shorter is written as a whole.
bool IsPatchOf(std::span<const CodedEntry> base, std::span<const CodedEntry> entries) {
  const std::size_t most = entries.size() / kPatchShare;
  if (base.size() > entries.size() || entries.size() - base.size() > most) return false;
  std::size_t changes = entries.size() - base.size();
  for (std::size_t i = 0; i < base.size() && changes <= most; ++i) {
    if (base[i].key != entries[i].key) return false;
    changes += base[i] != entries[i];
  }
  return changes <= most;
}

}  // namespace

std::uint32_t ListWriter::FindOrAdd(std::uint32_t candidate, std::uint32_t& height,
                                    std::int32_t ownId, std::span<const CodedEntry> entries) {
  const std::uint64_t hash =
      XXH3_64bits_withSeed(entries.data(), entries.size_bytes(), Extended(ownId));
  const auto next = static_cast<std::uint32_t>(blocks_.size());
  const std::uint32_t at = index_.FindOrAdd(hash, next, [&](std::uint32_t row) {
    return blocks_[row].ownId == ownId && std::ranges::equal(blocks_[row].entries, entries);
  });
  if (at != next) return blocks_[at].container;
  const std::optional<std::uint32_t> base = BaseFor(entries);
  // Blocks are written by height: a patch must come after what it is a patch of.
  if (base) height = std::max(height, blocks_[*base].height);
  blocks_.push_back({height, candidate, ownId, {entries.begin(), entries.end()}, base});
  return candidate;
}

// The latest ones first: a list is mostly like that of the Stagemark recorded before it.
std::optional<std::uint32_t> ListWriter::BaseFor(std::span<const CodedEntry> entries) const {
  const std::size_t last = blocks_.size() > kBasesTried ? blocks_.size() - kBasesTried : 0;
  for (std::size_t at = blocks_.size(); at-- > last;)
    if (IsPatchOf(blocks_[at].entries, entries)) return static_cast<std::uint32_t>(at);
  return std::nullopt;
}

void ListWriter::Put(std::string& out, const ListBlock& block,
                     std::span<const std::uint32_t> numbers) const {
  if (block.base) return PutPatch(out, block, numbers);
  out.push_back(static_cast<char>(BlockKind::List));
  PutVarint(out, block.entries.size());
  PutVarint(out, ZigZag(Extended(block.ownId)));
  ColumnValues keys;
  for (const CodedEntry& entry : block.entries) keys.push_back(Extended(entry.key));
  PutInts(out, keys);
  PutEntryValues(out, block.entries, numbers);
}

void ListWriter::PutPatch(std::string& out, const ListBlock& block,
                          std::span<const std::uint32_t> numbers) const {
  const ListBlock& base = blocks_[*block.base];
  std::vector<CodedEntry> changed;
  ColumnValues positions;
  ColumnValues keys;
  for (std::size_t i = 0; i < base.entries.size(); ++i) {
    if (base.entries[i] == block.entries[i]) continue;
    positions.push_back(i);
    changed.push_back(block.entries[i]);
  }
  for (std::size_t i = base.entries.size(); i < block.entries.size(); ++i) {
    keys.push_back(Extended(block.entries[i].key));
    changed.push_back(block.entries[i]);
  }
  out.push_back(static_cast<char>(BlockKind::Patch));
  PutVarint(out, numbers[base.container]);
  PutVarint(out, ZigZag(Extended(block.ownId)));
  PutVarint(out, positions.size());
  PutVarint(out, keys.size());
  PutInts(out, positions);
  PutInts(out, keys);
  PutEntryValues(out, changed, numbers);
}

}  // namespace engine
