#include "engine/scene/NodePool.h"

#include <cstdlib>
#include <new>

namespace engine {

namespace {

// The first cache line of a slab is its head, all others are blocks. Slabs with room are chained,
// the one in front is filled, and a new one is taken only when none has room.
constexpr std::size_t kCacheLine = 64;
// A slab is found from a block by clearing the low bits of its address.
constexpr std::size_t kSlabAlignment = 64 * 1024;
// A little less than the alignment: the allocator's own header fits between two slabs, so that they
// lie side by side.
constexpr std::size_t kSlabBytes = kSlabAlignment - kCacheLine;

}  // namespace

struct NodePool::Slab {
  Slab* next = nullptr;
  Slab* pred = nullptr;
  void* freed = nullptr;    // blocks given back, chained through their first word
  std::uint32_t fresh = 0;  // blocks never taken start here
  std::uint32_t live = 0;
};

NodePool::NodePool(std::size_t bytes)
    : stride_((bytes + kCacheLine - 1) / kCacheLine * kCacheLine),
      perSlab_(static_cast<std::uint32_t>((kSlabBytes - kCacheLine) / stride_)) {
  static_assert(sizeof(Slab) <= kCacheLine);
}

#if defined(__SANITIZE_ADDRESS__)

// Single blocks, so that the sanitizer sees every use after the end.
void* NodePool::Take() { return ::operator new(stride_, std::align_val_t(kCacheLine)); }
void NodePool::Give(void* block) { ::operator delete(block, std::align_val_t(kCacheLine)); }

#else

void* NodePool::Take() {
  Slab* slab = open_ ? open_ : NewSlab();
  if (slab == spare_) spare_ = nullptr;
  void* block = slab->freed;
  if (block) {
    slab->freed = *static_cast<void**>(block);
  } else {
    block = reinterpret_cast<std::byte*>(slab) + kCacheLine + stride_ * slab->fresh++;
  }
  if (++slab->live == perSlab_) Unlink(slab);
  return block;
}

void NodePool::Give(void* block) {
  Slab* slab =
      reinterpret_cast<Slab*>(reinterpret_cast<std::uintptr_t>(block) & ~(kSlabAlignment - 1));
  *static_cast<void**>(block) = slab->freed;
  slab->freed = block;
  if (slab->live-- == perSlab_) Link(slab);
  if (slab->live == 0) Empty(slab);
}

#endif

NodePool::Slab* NodePool::NewSlab() {
  void* memory = nullptr;
  if (posix_memalign(&memory, kSlabAlignment, kSlabBytes) != 0) throw std::bad_alloc();
  Slab* slab = ::new (memory) Slab;
  Link(slab);
  return slab;
}

void NodePool::Link(Slab* slab) {
  slab->pred = nullptr;
  slab->next = open_;
  if (open_) open_->pred = slab;
  open_ = slab;
}

void NodePool::Unlink(Slab* slab) {
  (slab->pred ? slab->pred->next : open_) = slab->next;
  if (slab->next) slab->next->pred = slab->pred;
}

// The spare stays in the chain and starts afresh: its blocks are given out in order again.
void NodePool::Empty(Slab* slab) {
  if (spare_) {
    Unlink(slab);
    std::free(slab);
    return;
  }
  slab->freed = nullptr;
  slab->fresh = 0;
  spare_ = slab;
}

}  // namespace engine
