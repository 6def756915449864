#include "tests/support/ContainerMemory.h"

#include <unordered_set>
#include <vector>

#include "engine/core/ContainerBody.h"
#include "engine/core/LongBody.h"

namespace tests {

namespace {

using namespace engine;

// Adds up blocks; a block with several owners counts where it is met first.
class Measurement {
 public:
  std::size_t Run(const ContainerBody* body) {
    Meet(body);
    while (!waiting_.empty()) {
      const ContainerBody* next = waiting_.back();
      waiting_.pop_back();
      Add(*next);
    }
    return bytes_;
  }

 private:
  template <class Block>
  bool IsNew(const Block* block) {
    return block && (block->owners.Unique() || met_.insert(block).second);
  }

  void Meet(const ContainerBody* body) {
    if (IsNew(body)) waiting_.push_back(body);
  }

  void Add(const ContainerBody& body) {
    if (body.IsShort()) {
      bytes_ += sizeof(body) + body.capacity * sizeof(Entry) + IndexBytes(body.capacity);
      return AddEntries(body.All());
    }
    if (body.IsLaidOut()) {
      bytes_ += sizeof(body) + (1 + body.capacity) * sizeof(std::uint64_t);
      if (IsNew(&body.Keys())) bytes_ += Layout::Bytes(body.Keys().capacity);
      return AddEntries(body.All());
    }
    const LongBody& entries = *AsLong(&body);
    bytes_ += sizeof(entries) + entries.chunks.capacity() * sizeof(ChunkPlace);
    if (IsNew(entries.index.get())) bytes_ += entries.index->Bytes();
    for (const ChunkPlace& place : entries.chunks) {
      if (!IsNew(place.chunk.get())) continue;
      bytes_ += Chunk::Bytes(place.chunk->capacity);
      AddEntries(place.chunk->All());
    }
  }

  void AddEntries(EntrySpan entries) {
    for (const Entry& entry : entries) {
      if (IsShared(entry.type)) AddShared(entry.Get());
    }
  }

  void AddShared(Value value) {
    if (value.type == host::DA_CONTAINER) {
      Meet(BlockOf<ContainerBody>(value.bits));
    } else if (value.type >= host::DA_STRING) {
      const auto* text = BlockOf<TextBlock>(value.bits);
      if (IsNew(text)) bytes_ += sizeof(*text) + text->capacity;
    } else if (IsNew(BlockOf<NumberBlock>(value.bits))) {
      bytes_ += sizeof(NumberBlock);
    }
  }

  std::size_t bytes_ = 0;
  std::vector<const ContainerBody*> waiting_;
  std::unordered_set<const void*> met_;
};

}  // namespace

std::size_t MemoryOf(const host::BaseContainer& container) {
  return Measurement().Run(engine::ContainerAccess::Body(container));
}

}  // namespace tests
