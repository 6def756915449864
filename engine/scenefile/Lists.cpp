#include "engine/scenefile/Lists.h"

#include <xxhash.h>

#include <algorithm>

namespace engine::scenefile {
namespace {

// How many earlier lists are tried as a base, and at which part of changed entries a list is no
// patch any more.
constexpr std::size_t kBasesTried = 8;
constexpr std::size_t kPatchShare = 8;

bool IsPatchOf(std::span<const Entry> base, std::span<const Entry> entries) {
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
                                    std::int32_t ownId, std::span<const Entry> entries) {
  const std::uint64_t hash =
      XXH3_64bits_withSeed(entries.data(), entries.size_bytes(), Extended(ownId));
  const auto next = static_cast<std::uint32_t>(blocks_.size());
  const std::uint32_t at = index_.FindOrAdd(hash, next, [&](std::uint32_t row) {
    return blocks_[row].ownId == ownId && std::ranges::equal(blocks_[row].entries, entries);
  });
  if (at != next) return blocks_[at].container;
  const std::optional<std::uint32_t> base = BaseFor(entries);
  if (base) height = std::max(height, blocks_[*base].height);
  blocks_.push_back({height, candidate, ownId, {entries.begin(), entries.end()}, base});
  return candidate;
}

std::optional<std::uint32_t> ListWriter::BaseFor(std::span<const Entry> entries) const {
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
  Column keys;
  for (const Entry& entry : block.entries) keys.push_back(Extended(entry.key));
  PutInts(out, keys);
  PutEntryValues(out, block.entries, numbers);
}

void ListWriter::PutPatch(std::string& out, const ListBlock& block,
                          std::span<const std::uint32_t> numbers) const {
  const ListBlock& base = blocks_[*block.base];
  std::vector<Entry> changed;
  Column positions;
  Column keys;
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

}  // namespace engine::scenefile
