#include "engine/core/ContainerAccess.h"

#include <unordered_set>
#include <vector>

#include "engine/core/ContainerBody.h"
#include "engine/core/LongBody.h"

namespace engine {

namespace {

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
    if (!body.IsLong()) {
      bytes_ += sizeof(body) + body.capacity * sizeof(Entry) + IndexBytes(body.capacity);
      AddEntries({body.Entries(), body.size});
      return;
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

  void AddEntries(std::span<const Entry> entries) {
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

NodeId LinkOf(const host::BaseContainer& container, host::LONG id) {
  const Entry* entry = FindEntry(ContainerAccess::Body(container), id);
  return entry && entry->type == host::DA_ALIASLINK ? entry->bits : 0;
}

void SetLinkId(host::BaseContainer& container, host::LONG id, NodeId target) {
  ContainerAccess::SetNumber(container, id, {host::DA_ALIASLINK, target});
}

const void* BodyOf(const host::BaseContainer& container) {
  const ContainerBody* body = ContainerAccess::Body(container);
  return SizeOf(body) == 0 && IdOf(body) == 0 ? nullptr : body;
}

void ForEachEntry(const host::BaseContainer& container,
                  const std::function<void(host::LONG, const host::GeData&)>& visit) {
  // A share of its own, so that the visitor may change the container.
  const host::BaseContainer kept = ContainerAccess::Share(ContainerAccess::Body(container));
  std::uint32_t next = 0;
  for (auto some = NextEntries(ContainerAccess::Body(kept), next); !some.empty();
       some = NextEntries(ContainerAccess::Body(kept), next)) {
    for (const Entry& entry : some) visit(entry.key, ValueAccess::Share(entry.Get()));
  }
}

std::size_t MemoryOf(const host::BaseContainer& container) {
  return Measurement().Run(ContainerAccess::Body(container));
}

bool Identical(const host::BaseContainer& a, const host::BaseContainer& b) {
  return SameBodies(ContainerAccess::Body(a), ContainerAccess::Body(b), OwnIds::kCompared);
}

}  // namespace engine
