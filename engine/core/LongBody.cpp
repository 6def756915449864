#include "engine/core/LongBody.h"

#include <algorithm>
#include <new>
#include <utility>

namespace engine {

namespace {

constexpr std::uint32_t kFirstChunkEntries = 2 * kShortEntries;
constexpr std::size_t kSpareChunks = 8;

Chunk* NewChunk(std::uint32_t capacity) {
  auto* chunk = new (::operator new(Chunk::Bytes(capacity))) Chunk;
  chunk->capacity = capacity;
  return chunk;
}

// Puts a chunk of one owner with the same entries and at least that room in the place of `chunk`.
void ReplaceChunk(SharedReference<Chunk>& chunk, std::uint32_t capacity) {
  Chunk* copy = NewChunk(capacity);
  copy->size = chunk->size;
  copy->linkKey = chunk->linkKey;
  copy->links = chunk->links;
  std::copy_n(chunk->Entries(), chunk->size, copy->Entries());
  if (chunk->owners.Unique()) {
    FreeChunkMemory(chunk.release());  // the entries have moved
  } else {
    for (const Entry& entry : copy->All()) Retain(entry.Get());
  }
  chunk = SharedReference<Chunk>(copy);
}

std::uint32_t SlotOf(Spot spot) { return spot.chunk << kChunkShift | spot.offset; }

// A fresh index of all entries.
void IndexKeys(LongBody& body) {
  body.index = SharedReference<KeyIndex>(new KeyIndex);
  body.index->Reserve(body.size);
  for (std::uint32_t c = 0; c < body.chunks.size(); ++c) {
    const Chunk& chunk = *body.chunks[c].chunk;
    for (std::uint32_t i = 0; i < chunk.size; ++i)
      body.index->Put(chunk.Entries()[i].key, SlotOf({c, i}));
  }
}

void MakeMixed(LongBody& body) {
  body.order = KeyOrder::kMixed;
  IndexKeys(body);
}

void PutInIndex(LongBody& body, host::LONG key, Spot spot) {
  if (!body.index->owners.Unique())
    body.index = SharedReference<KeyIndex>(new KeyIndex(*body.index));
  body.index->Put(key, SlotOf(spot));
  // Keys that left are still in the index; a container that keeps its size would collect them for
  // ever.
  if (body.index->Used() > 2 * (std::size_t{body.size} + kChunkEntries)) IndexKeys(body);
}

// The order of the keys once `key` comes behind them. The mixed order needs an index first.
KeyOrder OrderWith(const LongBody& body, host::LONG key) {
  if (body.order == KeyOrder::kDense && key >= 0 && static_cast<std::uint32_t>(key) == body.size)
    return KeyOrder::kDense;
  if (body.order != KeyOrder::kMixed && (body.size == 0 || key > body.greatestKey))
    return KeyOrder::kAscending;
  return KeyOrder::kMixed;
}

// Room for one more entry in the last chunk, which has one owner afterwards.
Chunk& ChunkForOneMore(LongBody& body, host::LONG key) {
  if (body.chunks.empty() || body.chunks.back().chunk->size == kChunkEntries) {
    Chunk* chunk = NewChunk(body.chunks.empty() ? kFirstChunkEntries : kChunkEntries);
    body.chunks.push_back({SharedReference<Chunk>(chunk), body.size, key});
    return *chunk;
  }
  SharedReference<Chunk>& last = body.chunks.back().chunk;
  if (last->size == last->capacity) ReplaceChunk(last, 2 * last->capacity);
  return WritableChunk(body, static_cast<std::uint32_t>(body.chunks.size()) - 1);
}

// The range of the chunk's links once a record with that link comes behind them.
void ExtendLinks(Chunk& chunk, RecordLink link) {
  const bool isFirst = chunk.size == 0;
  const bool follows = link.key == chunk.linkKey && link.target > chunk.links.greatest;
  if (link.target == 0 || !(isFirst || follows)) {
    chunk.links = {};
    return;
  }
  chunk.linkKey = link.key;
  if (isFirst) chunk.links.least = link.target;
  chunk.links.greatest = link.target;
}

Spot FindAscending(const LongBody& body, host::LONG key) {
  const auto& chunks = body.chunks;
  const auto after = std::ranges::upper_bound(chunks, key, {}, &ChunkPlace::leastKey);
  if (after == chunks.begin()) return {};
  const Chunk& chunk = *std::prev(after)->chunk;
  const auto all = chunk.All();
  const auto found = std::ranges::lower_bound(all, key, {}, &Entry::key);
  if (found == all.end() || found->key != key) return {};
  return {static_cast<std::uint32_t>(after - chunks.begin() - 1),
          static_cast<std::uint32_t>(found - all.begin())};
}

// Removing moves entries towards the front of their chunk, so an entry lies where it was put or
// before.
Spot FindMixed(const LongBody& body, host::LONG key) {
  const std::uint32_t slot = body.index->Find(key);
  if (slot == KeyIndex::kNone) return {};
  const Chunk& chunk = *body.chunks[slot >> kChunkShift].chunk;
  for (std::uint32_t i = std::min(slot % kChunkEntries + 1, chunk.size); i-- > 0;) {
    if (chunk.Entries()[i].key == key) return {slot >> kChunkShift, i};
  }
  return {};
}

// Chunks that removing has thinned out are filled up again. Each entry pays for this once for every
// time that half of the entries go.
void Compact(LongBody& body) {
  std::vector<ChunkPlace> thin;
  thin.swap(body.chunks);
  body.size = 0;
  body.order = KeyOrder::kDense;
  body.index = {};
  for (const ChunkPlace& place : thin) {
    for (const Entry& entry : place.chunk->All()) {
      Retain(entry.Get());
      AppendLong(body, entry.key, entry.Get());
    }
  }
}

RecordLink LastLink(const EntrySpan& entries) {
  for (std::size_t i = entries.size(); i-- > 0;) {
    const Entry entry = entries[i];
    if (entry.type == host::DA_ALIASLINK) return {entry.key, entry.bits};
  }
  return {};
}

}  // namespace

RecordLink RecordLink::Of(Value record) {
  if (record.type != host::DA_CONTAINER) return {};
  const auto* body = BlockOf<ContainerBody>(record.bits);
  if (!body || body->IsLong()) return {};
  if (body->IsLaidOut()) return LastLink(body->All());
  const Entry* entries = body->Entries();
  for (std::uint32_t i = body->size; i-- > 0;) {
    if (entries[i].type == host::DA_ALIASLINK) return {entries[i].key, entries[i].bits};
  }
  return {};
}

LongBody::LongBody(const LongBody& other)
    : chunks(other.chunks), index(other.index), order(other.order), greatestKey(other.greatestKey) {
  form = BodyForm::kLong;
  id = other.id;
  size = other.size;
}

void Chunk::End(Chunk* chunk) {
  for (const Entry& entry : chunk->All()) Release(entry.Get());
  FreeChunkMemory(chunk);
}

void FreeChunkMemory(Chunk* chunk) {
  chunk->~Chunk();
  ::operator delete(chunk);
}

Spot FindSparse(const LongBody& body, host::LONG key) {
  return body.order == KeyOrder::kMixed ? FindMixed(body, key) : FindAscending(body, key);
}

Spot SpotAt(const LongBody& body, std::uint32_t position) {
  const auto& chunks = body.chunks;
  const Spot full{position >> kChunkShift, position % kChunkEntries};
  if (body.order == KeyOrder::kDense) return full;
  const auto after = std::ranges::upper_bound(chunks, position, {}, &ChunkPlace::start);
  return {static_cast<std::uint32_t>(after - chunks.begin() - 1),
          position - std::prev(after)->start};
}

Chunk& WritableChunk(LongBody& body, std::uint32_t chunk) {
  SharedReference<Chunk>& place = body.chunks[chunk].chunk;
  if (!place->owners.Unique()) ReplaceChunk(place, place->capacity);
  return *place;
}

void AppendLong(LongBody& body, host::LONG key, Value value) {
  const KeyOrder order = OrderWith(body, key);
  if (order == KeyOrder::kMixed && body.order != order) MakeMixed(body);
  body.order = order;
  Chunk& chunk = ChunkForOneMore(body, key);
  if (chunk.size == 0 || chunk.links.IsKnown()) ExtendLinks(chunk, RecordLink::Of(value));
  FillEntry(chunk.Entries()[chunk.size++], key, value);
  ++body.size;
  body.greatestKey = key;
  if (order == KeyOrder::kMixed)
    PutInIndex(body, key, {static_cast<std::uint32_t>(body.chunks.size()) - 1, chunk.size - 1});
}

void ReplaceLong(LongBody& body, host::LONG key, Value value) {
  const Spot spot = FindSpot(body, key);
  Chunk& chunk = WritableChunk(body, spot.chunk);
  Entry& entry = chunk.Entries()[spot.offset];
  const Value before = entry.Get();
  if (chunk.links.IsKnown() && RecordLink::Of(before) != RecordLink::Of(value)) chunk.links = {};
  FillEntry(entry, key, value);
  Release(before);
}

void RemoveLong(LongBody& body, host::LONG key) {
  const Spot spot = FindSpot(body, key);
  if (body.order == KeyOrder::kDense) body.order = KeyOrder::kAscending;
  Chunk& chunk = WritableChunk(body, spot.chunk);
  Entry* hole = chunk.Entries() + spot.offset;
  const Value value = hole->Get();
  std::copy(hole + 1, chunk.Entries() + chunk.size, hole);
  --chunk.size;
  --body.size;
  for (std::size_t c = spot.chunk + 1; c < body.chunks.size(); ++c) --body.chunks[c].start;
  if (body.size == 0 || body.chunks.size() > 2 * (body.size >> kChunkShift) + kSpareChunks)
    Compact(body);
  Release(value);
}

}  // namespace engine
