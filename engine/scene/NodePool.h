// NodePool: memory for nodes of one class. Nodes taken in sequence lie in sequence, each beginning
// on a cache line, so that walking a tree in the order of its making reads memory forwards. Slabs
// that empty are given back. Main thread.
#pragma once

#include <cstddef>
#include <cstdint>

namespace engine {

class NodePool {
 public:
  // A pool of blocks of at least `bytes`.
  explicit NodePool(std::size_t bytes);
  NodePool(const NodePool&) = delete;
  NodePool& operator=(const NodePool&) = delete;

  // Raw memory for one node; throws std::bad_alloc when there is none.
  void* Take();
  void Give(void* block);

 private:
  struct Slab;
  Slab* NewSlab();
  void Link(Slab* slab);
  void Unlink(Slab* slab);
  void Empty(Slab* slab);

  std::size_t stride_;
  std::uint32_t perSlab_;
  Slab* open_ = nullptr;  // slabs with room; the first one is filled
  // One empty slab is kept, so that making and freeing one node costs no system memory
  Slab* spare_ = nullptr;
};

}  // namespace engine
