#include "engine/core/ContainerBody.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include "engine/core/LongBody.h"

namespace engine {

namespace {

// The memory of container bodies of the smallest size, kept for the next one. A recording builds
// and drops one such body for every object of a scene. Each thread keeps a few of its own, without
// locks; a block may be given back on another thread than it was taken on.
class SmallBlocks {
 public:
  static constexpr std::size_t kBytes = sizeof(ContainerBody) + kFirstEntries * sizeof(Entry);

  static void* Take() {
    Stock& stock = stock_;
    if (!stock.first) return ::operator new(kBytes);
    Block* block = stock.first;
    stock.first = block->next;
    --stock.count;
    return block;
  }
  static void Give(void* memory) {
    Stock& stock = stock_;
    if (stock.count >= stock.limit && !Open(stock)) {
      ::operator delete(memory);
      return;
    }
    stock.first = new (memory) Block{stock.first};
    ++stock.count;
  }

 private:
  struct Block {
    Block* next;
  };
  // Without a constructor or destructor, so that reaching it costs no check.
  struct Stock {
    Block* first;
    std::size_t count;
    std::size_t limit;  // 0 before the first block is kept and after the thread has emptied it
    bool closed;
  };
  struct Closing;

  // Prepares a stock that was never used; false where there is no room.
  static bool Open(Stock& stock);

#if defined(__SANITIZE_ADDRESS__)
  static constexpr std::size_t kLimit = 0;  // the sanitizer watches blocks that are truly freed
#else
  static constexpr std::size_t kLimit = 256;
#endif
  [[gnu::tls_model("initial-exec")]] static thread_local constinit Stock stock_;
};

thread_local constinit SmallBlocks::Stock SmallBlocks::stock_ = {nullptr, 0, 0, false};

// Empties the stock at the end of its thread. Blocks given back later are freed at once.
struct SmallBlocks::Closing {
  Closing() {}
  ~Closing() {
    Stock& stock = stock_;
    stock.limit = 0;
    stock.closed = true;
    while (stock.first) ::operator delete(std::exchange(stock.first, stock.first->next));
  }
};

bool SmallBlocks::Open(Stock& stock) {
  if (stock.closed || stock.limit > 0 || kLimit == 0) return false;
  static thread_local const Closing closing;
  stock.limit = kLimit;
  return true;
}

constexpr int kDeepestRecursion = 16;

std::size_t ShortBytes(std::uint32_t capacity) {
  return sizeof(ContainerBody) + capacity * sizeof(Entry) + IndexBytes(capacity);
}

ContainerBody* NewShort(host::LONG id, std::uint32_t capacity) {
  void* memory =
      capacity == kFirstEntries ? SmallBlocks::Take() : ::operator new(ShortBytes(capacity));
  auto* body = new (memory) ContainerBody;
  body->id = id;
  body->capacity = static_cast<std::uint16_t>(capacity);
  body->Entries()->key = 0;  // the first key is looked at before the size is
  return body;
}

void FreeShort(ContainerBody* body) {
  const bool small = body->capacity == kFirstEntries;
  body->~ContainerBody();
  if (small) {
    SmallBlocks::Give(body);
  } else {
    ::operator delete(body);
  }
}

void FreeBodyMemory(ContainerBody* body) {
  if (body->IsLong()) {
    delete AsLong(body);
  } else {
    FreeShort(body);
  }
}

bool HoldsNumbersOnly(const ContainerBody& body) {
  for (std::uint32_t i = 0; i < body.size; ++i) {
    if (IsShared(body.Entries()[i].type)) return false;
  }
  return true;
}

// Ends bodies that have no owner left. Nested ones are ended right away, as they lie near in
// memory, but from a certain depth on they wait in a list.
class Destruction {
 public:
  void Run(ContainerBody* body) {
    End(body, 0);
    while (!waiting_.empty()) {
      ContainerBody* next = waiting_.back();
      waiting_.pop_back();
      End(next, 0);
    }
  }

 private:
  void End(ContainerBody* body, int depth) {
    if (body->IsLong()) {
      for (ChunkPlace& place : AsLong(body)->chunks) EndChunk(place.chunk.release(), depth);
    } else {
      EndEntries({body->Entries(), body->size}, depth);
    }
    FreeBodyMemory(body);
  }

  void EndChunk(Chunk* chunk, int depth) {
    if (!chunk->owners.Release()) return;
    EndEntries(chunk->All(), depth);
    FreeChunkMemory(chunk);
  }

  void EndEntries(std::span<const Entry> entries, int depth) {
    for (const Entry& entry : entries) {
      if (entry.type != host::DA_CONTAINER) {
        Release(entry.Get());
      } else if (auto* body = BlockOf<ContainerBody>(entry.bits); body && body->owners.Release()) {
        Nested(body, depth);
      }
    }
  }

  void Nested(ContainerBody* body, int depth) {
    if (depth < kDeepestRecursion) {
      End(body, depth + 1);
    } else {
      waiting_.push_back(body);
    }
  }

  std::vector<ContainerBody*> waiting_;
};

ContainerBody* CopyShort(const ContainerBody& body) {
  ContainerBody* copy = NewShort(body.id, body.capacity);
  const std::size_t indexed = ShortBytes(body.capacity) - sizeof(ContainerBody);
  std::memcpy(copy->Entries(), body.Entries(),
              body.IsIndexed() ? indexed : body.size * sizeof(Entry));
  copy->size = body.size;
  for (std::uint32_t i = 0; i < copy->size; ++i) Retain(copy->Entries()[i].Get());
  return copy;
}

// The entries of a short body, with their shares, in a new body with more room.
ContainerBody* Grow(ContainerBody* body) {
  ContainerBody* grown = nullptr;
  if (body->capacity < kShortEntries) {
    grown = NewShort(body->id, 2 * body->capacity);
    std::copy_n(body->Entries(), body->size, grown->Entries());
    grown->size = body->size;
    IndexAgain(grown->Entries(), grown->capacity, grown->size);
  } else {
    auto entries = std::make_unique<LongBody>();
    entries->id = body->id;
    try {
      for (std::uint32_t i = 0; i < body->size; ++i)
        AppendLong(*entries, body->Entries()[i].key, body->Entries()[i].Get());
    } catch (...) {
      // The short body still owns the shares.
      for (ChunkPlace& place : entries->chunks) FreeChunkMemory(place.chunk.release());
      throw;
    }
    grown = entries.release();
  }
  FreeBodyMemory(body);
  return grown;
}

bool RemoveShort(ContainerBody& body, host::LONG key) {
  const Entry* found = FindShortEntry(body, key);
  if (!found) return false;
  const Value value = found->Get();
  Entry* hole = body.Entries() + (found - body.Entries());
  std::copy(hole + 1, body.Entries() + body.size, hole);
  --body.size;
  IndexAgain(body.Entries(), body.capacity, body.size);
  Release(value);
  return true;
}

}  // namespace

void EndBody(ContainerBody* body) {
  if (!body->IsLong() && HoldsNumbersOnly(*body)) {
    FreeShort(body);
  } else {
    Destruction().Run(body);
  }
}

const Entry* FindLongEntry(const ContainerBody& body, host::LONG key) {
  const Spot spot = FindSpot(*AsLong(&body), key);
  if (!spot.Found()) return nullptr;
  const Chunk& chunk = *AsLong(&body)->chunks[spot.chunk].chunk;
  FetchRecordAhead(chunk.All(), spot.offset);
  return chunk.Entries() + spot.offset;
}

const Entry* EntryAt(const ContainerBody* body, std::uint32_t position) {
  if (position >= SizeOf(body)) return nullptr;
  if (!body->IsLong()) return body->Entries() + position;
  const Spot spot = SpotAt(*AsLong(body), position);
  return AsLong(body)->chunks[spot.chunk].chunk->Entries() + spot.offset;
}

host::LONG FindPosition(const ContainerBody* body, host::LONG key) {
  if (!body) return host::NOTOK;
  if (!body->IsLong()) {
    const Entry* entry = FindShortEntry(*body, key);
    return entry ? static_cast<host::LONG>(entry - body->Entries()) : host::NOTOK;
  }
  const Spot spot = FindSpot(*AsLong(body), key);
  return spot.Found()
             ? static_cast<host::LONG>(AsLong(body)->chunks[spot.chunk].start + spot.offset)
             : host::NOTOK;
}

std::span<const Entry> NextEntries(const ContainerBody* body, std::uint32_t& next) {
  if (!body) return {};
  if (!body->IsLong())
    return next++ == 0 ? std::span<const Entry>(body->Entries(), body->size)
                       : std::span<const Entry>();
  const auto& chunks = AsLong(body)->chunks;
  while (next < chunks.size()) {
    const Chunk& chunk = *chunks[next++].chunk;
    if (chunk.size > 0) return chunk.All();
  }
  return {};
}

ContainerBody* NewBody(host::LONG id) { return NewShort(id, kFirstEntries); }

ContainerBody* SplitBody(ContainerBody* body) {
  ContainerBody* copy = body->IsLong() ? new LongBody(*AsLong(body)) : CopyShort(*body);
  ReleaseBody(body);
  return copy;
}

Entry* WritableLongEntry(ContainerBody& body, host::LONG key) {
  const Spot spot = FindSpot(*AsLong(&body), key);
  if (!spot.Found()) return nullptr;
  Chunk& chunk = WritableChunk(*AsLong(&body), spot.chunk);
  chunk.links = {};  // whatever is written into it
  return chunk.Entries() + spot.offset;
}

ContainerBody* AppendWithGrowth(ContainerBody* body, host::LONG key, Value value) {
  if (!body->IsLong()) body = Grow(body);
  if (!body->IsLong()) return AppendEntry(body, key, value);
  AppendLong(*AsLong(body), key, value);
  return body;
}

bool RemoveEntry(ContainerBody* body, host::LONG key) {
  return body->IsLong() ? RemoveLong(*AsLong(body), key) : RemoveShort(*body, key);
}

ContainerBody* ClearEntries(ContainerBody* body) {
  if (body->IsLong()) {
    ContainerBody* empty = NewBody(body->id);
    ReleaseBody(body);
    return empty;
  }
  const std::uint32_t size = body->size;
  body->size = 0;
  IndexAgain(body->Entries(), body->capacity, 0);
  for (std::uint32_t i = 0; i < size; ++i) Release(body->Entries()[i].Get());
  return body;
}

}  // namespace engine
