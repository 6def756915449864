// NodeTable: the nodes of one document by identity. A page holds 4096 consecutive identities as an
// array; pages with few nodes keep a short list, so that scattered identities of a strange file
// cost little. Owns no node. Main thread.
#pragma once

#include <array>
#include <memory>
#include <unordered_map>
#include <vector>

#include "engine/core/ContainerContents.h"

namespace engine {

class NodeTable {
 public:
  NodeTable();
  ~NodeTable();

  // The node with that identity, or null. About one cache miss.
  host::BaseList2D* Find(NodeId id) const {
    const Near& near = near_[(id >> kPageBits) % kNear];
    return near.page == id >> kPageBits ? near.slots[id & kPageMask] : FindFar(id);
  }
  // False, changing nothing, when the identity is taken.
  bool Add(NodeId id, host::BaseList2D* node);
  void Remove(NodeId id);
  std::size_t Count() const { return count_; }

 private:
  static constexpr unsigned kPageBits = 12;
  static constexpr NodeId kPageMask = (NodeId{1} << kPageBits) - 1;
  // A million consecutive identities are found without asking the map.
  static constexpr std::size_t kNear = 256;

  struct Page;
  struct Near {
    NodeId page = ~NodeId{0};
    host::BaseList2D** slots = nullptr;
  };
  struct PageHash {
    std::size_t operator()(NodeId page) const;
  };

  host::BaseList2D* FindFar(NodeId id) const;
  static host::BaseList2D** MakeDense(Page& page);

  mutable std::array<Near, kNear> near_;
  std::unordered_map<NodeId, Page, PageHash> pages_;
  std::size_t count_ = 0;
};

}  // namespace engine
