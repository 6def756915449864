// LongBody: the long form of a container's entries. A table of chunks in order; a chunk may hold
// fewer entries than it has room for once entries were removed, so the table knows the position at
// which each chunk starts. Keys are found by position while key and position are the same, by
// binary search while they ascend, else by KeyIndex.
#pragma once

#include <span>
#include <vector>

#include "engine/core/ContainerBody.h"
#include "engine/core/KeyIndex.h"

namespace engine {

inline constexpr std::uint32_t kChunkShift = 9;
inline constexpr std::uint32_t kChunkEntries = 1U << kChunkShift;  // most entries of a chunk
// How far ahead of the entry in hand the record of another one is fetched
inline constexpr std::uint32_t kFetchedAhead = 8;

// The last link among the values of a record, by which records name what they are of; 0 and 0 for
// any other value.
struct RecordLink {
  host::LONG key = 0;
  std::uint64_t target = 0;

  static RecordLink Of(Value record);
  bool operator==(const RecordLink&) const = default;
};

// The range of the records' targets in a chunk. Known while every entry is a record, the last link
// of each stands under the same key, and each target is greater than the one before; so no two are
// the same. Removing leaves the range wider than it need be.
struct LinkRange {
  std::uint64_t least = 1;
  std::uint64_t greatest = 0;

  bool IsKnown() const { return least <= greatest; }
};

struct Chunk {
  // Releases the entries and the memory of a chunk without owners.
  static void End(Chunk* chunk);

  SharedCount owners;
  std::uint32_t size = 0;
  std::uint32_t capacity = 0;
  host::LONG linkKey = 0;  // of `links` while they are known
  LinkRange links;         // kept by whoever writes an entry

  Entry* Entries() { return static_cast<Entry*>(static_cast<void*>(this + 1)); }
  const Entry* Entries() const {
    return static_cast<const Entry*>(static_cast<const void*>(this + 1));
  }
  std::span<const Entry> All() const { return {Entries(), size}; }
  // Bytes of a chunk with that room.
  static std::size_t Bytes(std::uint32_t capacity) {
    return sizeof(Chunk) + capacity * sizeof(Entry);
  }
};
static_assert(sizeof(Chunk) % alignof(Entry) == 0);

struct ChunkPlace {
  SharedReference<Chunk> chunk;  // never null; may be empty
  std::uint32_t start;           // position of its first entry
  host::LONG leastKey;  // while keys ascend: not more than its first key, more than all keys before
};

enum class KeyOrder : std::uint32_t { kDense, kAscending, kMixed };

struct LongBody : ContainerBody {
  std::vector<ChunkPlace> chunks;
  SharedReference<KeyIndex> index;  // only while keys are mixed
  KeyOrder order = KeyOrder::kDense;
  host::LONG greatestKey = 0;  // while keys ascend: not less than the last one

  LongBody() { form = BodyForm::kLong; }
  // Shares all chunks.
  LongBody(const LongBody& other);
  LongBody& operator=(const LongBody&) = delete;
};

inline LongBody* AsLong(ContainerBody* body) { return static_cast<LongBody*>(body); }
inline const LongBody* AsLong(const ContainerBody* body) {
  return static_cast<const LongBody*>(body);
}

// Where an entry lies: its chunk and its place there. FindSparse is for keys that are not their
// positions.
struct Spot {
  std::uint32_t chunk = UINT32_MAX;
  std::uint32_t offset = 0;
  bool Found() const { return chunk != UINT32_MAX; }
};

Spot FindSparse(const LongBody& body, host::LONG key);
inline Spot FindSpot(const LongBody& body, host::LONG key) {
  if (body.order != KeyOrder::kDense) return FindSparse(body, key);
  const auto position = static_cast<std::uint32_t>(key);
  return position < body.size ? Spot{position >> kChunkShift, position % kChunkEntries} : Spot{};
}
Spot SpotAt(const LongBody& body, std::uint32_t position);
// The chunk, with one owner. Its range of links is as before.
Chunk& WritableChunk(LongBody& body, std::uint32_t chunk);
// Takes the value's share. The key is not there yet.
void AppendLong(LongBody& body, host::LONG key, Value value);
// Takes the value's share and releases the one of the value before. The key is there.
void ReplaceLong(LongBody& body, host::LONG key, Value value);
// The key is there.
void RemoveLong(LongBody& body, host::LONG key);
// Of a chunk whose entries are released or have moved elsewhere.
void FreeChunkMemory(Chunk* chunk);

// Records are read one after the other: the memory of one that follows is fetched while this one is
// read. Nothing comes of it where the entry is no record.
inline void FetchRecordAhead(std::span<const Entry> entries, std::size_t at) {
  constexpr std::uint64_t kCacheLine = 64;
  if (at + kFetchedAhead >= entries.size()) return;
  const std::uint64_t record = entries[at + kFetchedAhead].bits;
  __builtin_prefetch(BlockOf<const char>(record));
  __builtin_prefetch(BlockOf<const char>(record + kCacheLine));
}

}  // namespace engine
