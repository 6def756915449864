// SelectionOrder: in which order the elements of one document and one kind were selected. It names
// every selected one; it may also name some that are not selected any more, or one twice, of which
// the last counts. Main thread.
#pragma once

#include <vector>

#include "engine/scene/NodeTable.h"

namespace engine {

class SelectionOrder {
 public:
  // The element was selected just now. Amortized O(1).
  void Add(NodeId id, const NodeTable& nodes);
  // Deselects all; there is no order any more. O(n).
  void DeselectAll(const NodeTable& nodes);
  // The one selected last of those that still are, or null.
  host::BaseList2D* Last(const NodeTable& nodes);
  // All selected ones, each once, the one selected last at the end. O(n).
  std::vector<host::BaseList2D*> InOrder(const NodeTable& nodes) const;

 private:
  void Tidy(const NodeTable& nodes);

  static constexpr std::size_t kFirstTidy = 64;

  std::vector<NodeId> ids_;
  std::size_t tidyAt_ = kFirstTidy;
};

}  // namespace engine
