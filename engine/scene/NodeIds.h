// Identities of nodes: one counter for the whole process. It counts inside ranges of 2^24 whose
// beginnings are drawn at random, so that identities kept in files of other sessions lie elsewhere;
// a range seen in a file is never used for new nodes. Main thread.
#pragma once

#include <unordered_set>

#include "engine/core/ContainerAccess.h"

namespace engine {

class NodeIds {
 public:
  static NodeIds& Instance();

  // An identity that no node has or had.
  NodeId Next() { return next_ != end_ ? next_++ : FirstOfNewRange(); }
  // Sees to it that Next never gives `id` from now on. O(1).
  void Seen(NodeId id);

  // Identities per range; ranges are numbered by id / kRange.
  static constexpr NodeId kRange = NodeId{1} << 24;

 private:
  NodeId FirstOfNewRange();

  NodeId next_ = 0;
  NodeId end_ = 0;
  NodeId lastSeen_ = 0;  // range of the last foreign identity: files bring them in long runs
  std::unordered_set<NodeId> taken_;
};

}  // namespace engine
