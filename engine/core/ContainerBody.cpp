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
constexpr std::uint32_t kFewest = 2;  // least room of a short body

std::size_t ShortBytes(std::uint32_t capacity) {
  return sizeof(ContainerBody) + capacity * sizeof(Entry) + IndexBytes(capacity);
}

// The place of the first entry is looked at before the size is: where there is none, it is of no
// type.
void MarkNoEntry(ContainerBody& body) { FillEntry(*body.Entries(), 0, {host::NOTOK, 0}); }

ContainerBody* NewShort(host::LONG id, std::uint32_t capacity) {
  void* memory =
      capacity == kFirstEntries ? SmallBlocks::Take() : ::operator new(ShortBytes(capacity));
  auto* body = new (memory) ContainerBody;
  body->id = id;
  body->capacity = static_cast<std::uint8_t>(capacity);
  MarkNoEntry(*body);
  return body;
}

ContainerBody* NewLaidOut(host::LONG id, std::uint32_t capacity, SharedReference<Layout> layout) {
  void* memory = ::operator new(sizeof(ContainerBody) + (1 + capacity) * sizeof(std::uint64_t));
  auto* body = new (memory) ContainerBody;
  body->id = id;
  body->form = BodyForm::kLaidOut;
  body->capacity = static_cast<std::uint8_t>(capacity);
  std::construct_at(&body->Keys(), std::move(layout));
  return body;
}

void FreeLaidOut(ContainerBody* body) {
  std::destroy_at(&body->Keys());
  body->~ContainerBody();
  ::operator delete(body);
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
  switch (body->form) {
    case BodyForm::kShort:
      FreeShort(body);
      break;
    case BodyForm::kLaidOut:
      FreeLaidOut(body);
      break;
    case BodyForm::kLong:
      delete AsLong(body);
      break;
  }
}

bool HoldsNumbersOnly(const ContainerBody& body) {
  if (body.IsLaidOut() && body.Keys().numbersOnly) return true;
  for (const Entry& entry : body.All()) {
    if (IsShared(entry.type)) return false;
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
      EndEntries(body->All(), depth);
    }
    FreeBodyMemory(body);
  }

  void EndChunk(Chunk* chunk, int depth) {
    if (!chunk->owners.Release()) return;
    EndEntries(chunk->All(), depth);
    FreeChunkMemory(chunk);
  }

  void EndEntries(EntrySpan entries, int depth) {
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

// Of one or two entries with no more room than for these: most copies are records, which stay as
// large as they are, and those of texture tags have two.
ContainerBody* CopyShort(const ContainerBody& body) {
  ContainerBody* copy = NewShort(body.id, body.size <= kFewest ? kFewest : body.capacity);
  const std::size_t indexed = ShortBytes(copy->capacity) - sizeof(ContainerBody);
  if (body.size == kFirstEntries && copy->capacity == kFirstEntries) {
    std::copy_n(body.Entries(), kFirstEntries, copy->Entries());  // most records: not by a call
  } else {
    std::memcpy(copy->Entries(), body.Entries(),
                copy->IsIndexed() ? indexed : body.size * sizeof(Entry));
  }
  copy->size = body.size;
  for (std::uint32_t i = 0; i < copy->size; ++i) Retain(copy->Entries()[i].Get());
  return copy;
}

// With no more room than it needs: most copies are records, which stay as large as they are.
ContainerBody* CopyLaidOut(ContainerBody& body) {
  ContainerBody* copy = NewLaidOut(body.id, std::max(body.size, kFirstKeys), body.Keys());
  std::copy_n(body.Values(), body.size, copy->Values());
  copy->size = body.size;
  if (!copy->Keys()->numbersOnly) {
    for (const Entry& entry : copy->All()) Retain(entry.Get());
  }
  return copy;
}

bool HoldsContainer(const ContainerBody& body) {
  const std::span entries(body.Entries(), body.size);
  return std::ranges::any_of(entries,
                             [](const Entry& entry) { return entry.type == host::DA_CONTAINER; });
}

// These put the entries of a body, with their shares, into a new one with more room.
ContainerBody* GrowShort(ContainerBody* body) {
  ContainerBody* grown = NewShort(body->id, 2u * body->capacity);
  std::copy_n(body->Entries(), body->size, grown->Entries());
  grown->size = body->size;
  IndexAgain(grown->Entries(), grown->capacity, grown->size);
  FreeBodyMemory(body);
  return grown;
}

ContainerBody* GrowLaidOut(ContainerBody* body) {
  const std::uint32_t most = std::max<std::uint32_t>(body->Keys()->size, 2u * body->capacity);
  ContainerBody* grown = NewLaidOut(body->id, std::min(most, kShortEntries), body->Keys());
  std::copy_n(body->Values(), body->size, grown->Values());
  grown->size = body->size;
  FreeBodyMemory(body);
  return grown;
}

// These give a body another form and put one more entry in. The body before keeps its entries where
// memory fails.
ContainerBody* LayOut(ContainerBody* body, host::LONG key, Value value) {
  std::uint64_t keys[kFirstKeys];
  for (std::uint32_t i = 0; i < kFirstKeys; ++i) keys[i] = KeyAndType(body->Entries()[i]);
  SharedReference<Layout> layout = LayoutBeginningWith(keys);
  PutKeyBehind(layout, kFirstKeys, KeyAndType(key, value.type));
  // Who begins with these keys mostly has all the others, too.
  const auto capacity = std::clamp<std::uint32_t>(layout->size, kIndexedEntries, kShortEntries);
  ContainerBody* grown = NewLaidOut(body->id, capacity, std::move(layout));
  for (std::uint32_t i = 0; i < kFirstKeys; ++i) grown->Values()[i] = body->Entries()[i].bits;
  grown->Values()[kFirstKeys] = value.bits;
  grown->size = kFirstKeys + 1;
  FreeBodyMemory(body);
  return grown;
}

ContainerBody* MakeLong(ContainerBody* body, host::LONG key, Value value) {
  auto entries = std::make_unique<LongBody>();
  entries->id = body->id;
  try {
    for (const Entry& entry : body->All()) AppendLong(*entries, entry.key, entry.Get());
    AppendLong(*entries, key, value);
  } catch (...) {
    for (ChunkPlace& place : entries->chunks) FreeChunkMemory(place.chunk.release());
    throw;
  }
  FreeBodyMemory(body);
  return entries.release();
}

// A laid-out body in the short form, with room for one more where there may be any.
ContainerBody* MakeShort(ContainerBody* body) {
  const std::uint32_t capacity =
      std::clamp(std::bit_ceil(body->size + 1), kFirstEntries, kShortEntries);
  ContainerBody* entries = NewShort(body->id, capacity);
  for (std::uint32_t i = 0; i < body->size; ++i) entries->Entries()[i] = ShortEntryAt(*body, i);
  entries->size = body->size;
  IndexAgain(entries->Entries(), entries->capacity, entries->size);
  FreeBodyMemory(body);
  return entries;
}

ContainerBody* AppendLaidOut(ContainerBody* body, host::LONG key, Value value) {
  PutKeyBehind(body->Keys(), body->size, KeyAndType(key, value.type));
  if (body->size == body->capacity) body = GrowLaidOut(body);
  body->Values()[body->size++] = value.bits;
  return body;
}

void RemoveShort(ContainerBody& body, std::uint32_t position) {
  Entry* hole = body.Entries() + position;
  std::copy(hole + 1, body.Entries() + body.size, hole);
  --body.size;
  body.behind = 0;
  if (body.size == 0) MarkNoEntry(body);
  IndexAgain(body.Entries(), body.capacity, body.size);
}

void RemoveLaidOut(ContainerBody& body, std::uint32_t position) {
  TakeKeyOut(body.Keys(), body.size, position);
  std::uint64_t* hole = body.Values() + position;
  std::copy(hole + 1, body.Values() + body.size, hole);
  --body.size;
}

}  // namespace

void EndBody(ContainerBody* body) {
  if (!body->IsLong() && HoldsNumbersOnly(*body)) {
    FreeBodyMemory(body);
  } else {
    Destruction().Run(body);
  }
}

std::optional<Entry> FindLongEntry(const ContainerBody& body, host::LONG key) {
  const Spot spot = FindSpot(*AsLong(&body), key);
  if (!spot.Found()) return {};
  const Chunk& chunk = *AsLong(&body)->chunks[spot.chunk].chunk;
  FetchRecordAhead(chunk.All(), spot.offset);
  return chunk.Entries()[spot.offset];
}

std::optional<Entry> EntryAt(const ContainerBody* body, std::uint32_t position) {
  if (position >= SizeOf(body)) return {};
  if (!body->IsLong()) return ShortEntryAt(*body, position);
  const Spot spot = SpotAt(*AsLong(body), position);
  return AsLong(body)->chunks[spot.chunk].chunk->Entries()[spot.offset];
}

host::LONG FindPosition(const ContainerBody* body, host::LONG key) {
  if (!body) return host::NOTOK;
  if (!body->IsLong()) {
    return static_cast<host::LONG>(FindShort(*body, key));  // kNoPosition is -1
  }
  const Spot spot = FindSpot(*AsLong(body), key);
  return spot.Found()
             ? static_cast<host::LONG>(AsLong(body)->chunks[spot.chunk].start + spot.offset)
             : host::NOTOK;
}

EntrySpan NextEntries(const ContainerBody* body, std::uint32_t& next) {
  if (!body) return {};
  if (!body->IsLong()) return next++ == 0 ? body->All() : EntrySpan();
  const auto& chunks = AsLong(body)->chunks;
  while (next < chunks.size()) {
    const Chunk& chunk = *chunks[next++].chunk;
    if (chunk.size > 0) return chunk.All();
  }
  return {};
}

ContainerBody* NewBody(host::LONG id) { return NewShort(id, kFirstEntries); }

ContainerBody* SplitBody(ContainerBody* body) {
  ContainerBody* copy = body->IsLong()      ? new LongBody(*AsLong(body))
                        : body->IsLaidOut() ? CopyLaidOut(*body)
                                            : CopyShort(*body);
  ReleaseBody(body);
  return copy;
}

std::uint64_t& ContainerBits(ContainerBody& body, host::LONG key) {
  if (!body.IsLong()) return body.BitsAt(FindShort(body, key));
  const Spot spot = FindSpot(*AsLong(&body), key);
  Chunk& chunk = WritableChunk(*AsLong(&body), spot.chunk);
  chunk.links = {};  // whatever is written into it
  return chunk.Entries()[spot.offset].bits;
}

ContainerBody* AppendOtherwise(ContainerBody* body, host::LONG key, Value value) {
  if (body->IsLong()) {
    AppendLong(*AsLong(body), key, value);
    return body;
  }
  if (body->size == kShortEntries) return MakeLong(body, key, value);
  const bool isContainer = value.type == host::DA_CONTAINER;
  if (body->IsLaidOut()) {
    return isContainer ? AppendEntry(MakeShort(body), key, value) : AppendLaidOut(body, key, value);
  }
  const bool mayBeLaidOut = body->size == kFirstKeys && !isContainer && !HoldsContainer(*body);
  return mayBeLaidOut ? LayOut(body, key, value) : AppendEntry(GrowShort(body), key, value);
}

ContainerBody* ReplaceEntry(ContainerBody* body, host::LONG key, Value value) {
  if (body->IsLong()) {
    ReplaceLong(*AsLong(body), key, value);
    return body;
  }
  if (body->IsLaidOut() && value.type == host::DA_CONTAINER) body = MakeShort(body);
  const std::uint32_t position = FindShort(*body, key);
  const Value before = ShortEntryAt(*body, position).Get();
  if (body->IsLaidOut()) {
    PutKeyAt(body->Keys(), body->size, position, KeyAndType(key, value.type));
    body->Values()[position] = value.bits;
  } else {
    FillEntry(body->Entries()[position], key, value);
  }
  Release(before);
  return body;
}

ContainerBody* RemoveEntry(ContainerBody* body, host::LONG key) {
  if (body->IsLong()) {
    RemoveLong(*AsLong(body), key);
    return body;
  }
  const std::uint32_t position = FindShort(*body, key);
  const Value value = ShortEntryAt(*body, position).Get();
  if (body->IsLaidOut()) {
    RemoveLaidOut(*body, position);
  } else {
    RemoveShort(*body, position);
  }
  Release(value);
  return body;
}

ContainerBody* ClearEntries(ContainerBody* body) {
  if (body->IsLong()) {
    ContainerBody* empty = NewBody(body->id);
    ReleaseBody(body);
    return empty;
  }
  const EntrySpan entries = body->All();
  body->size = 0;
  body->behind = 0;
  for (const Entry& entry : entries) Release(entry.Get());
  if (body->IsShort()) {
    MarkNoEntry(*body);
    IndexAgain(body->Entries(), body->capacity, 0);
  }
  return body;
}

}  // namespace engine
