// Identities of nodes, by which links name them. One counter for the whole process gives them: it
// counts inside ranges of 2^24 whose beginnings are drawn at random, so that identities kept in
// files of other sessions lie elsewhere; a range seen in a file is never used for new nodes. Main
// thread; looking up on any thread that may read the document.
#pragma once

#include <unordered_set>

#include "engine/core/ContainerContents.h"
#include "host/BaseDocument.h"

namespace engine {

NodeId IdOf(const host::GeListNode& node);
// Gives a node that is in no document the identity it had in a file. False when it is 0 or the node
// is in a document.
bool SetId(host::GeListNode& node, NodeId id);
// The element with that identity if it lives in `doc`, anywhere in its trees, else null; null for
// no document. O(1).
host::BaseList2D* FindNode(const host::BaseDocument* doc, NodeId id);

// The counter. Makers of nodes in this folder ask it.
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
