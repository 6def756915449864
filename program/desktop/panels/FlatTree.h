// FlatTree: the shape of a tree of nodes as one flat list in which the children of a node stand
// together, as an item model needs it: parent, row and children of any place without a walk. It
// holds identities only. Main thread.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "engine/scene/Nodes.h"

namespace desktop {

class FlatTree {
 public:
  struct Entry {
    engine::NodeId id = 0;
    int parent = 0;  // place in the list; 0 stands above the top level
    int row = 0;
    int firstChild = 0;
    int childCount = 0;
    bool operator==(const Entry&) const = default;
  };

  FlatTree() : entries_(1) {}
  // The siblings from `first` on (null: none) with all below them.
  explicit FlatTree(const host::GeListNode* first);

  // The nodes for which `keep` says so, with all that is above them. Linear.
  FlatTree Kept(const std::function<bool(engine::NodeId)>& keep) const;

  // How many nodes there are: their places are 1 to that, what is above a node before it.
  int Count() const { return static_cast<int>(entries_.size()) - 1; }
  const Entry& At(int place) const { return entries_[static_cast<std::size_t>(place)]; }
  // The place of a node, 0 where it is not in here. The first question is linear, the others are
  // not.
  int PlaceOf(engine::NodeId id) const;
  bool operator==(const FlatTree& other) const { return entries_ == other.entries_; }

 private:
  std::vector<Entry> entries_;
  // Places by identity, an open table that is made when it is first asked for; empty slots hold 0.
  // A copy of this tree shares it.
  mutable std::shared_ptr<const std::vector<int>> places_;
};

}  // namespace desktop
