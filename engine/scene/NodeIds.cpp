#include "engine/scene/NodeIds.h"

#include <random>

#include "engine/scene/DocumentBody.h"
#include "engine/scene/NodeTypes.h"
#include "engine/scene/SeededIds.h"

namespace engine {

using host::BaseDocument;
using host::BaseList2D;
using host::GeListNode;
using A = NodeAccess;

namespace {

// With 2^24 identities each, the last one ends at 2^63: an identity is positive also where it is
// taken for a signed number. Range 0 is left out, since the identity 0 means none.
constexpr NodeId kRanges = (NodeId{1} << 39) - 1;

// Of the innermost scope of SeededIds; null: ranges are drawn by chance.
std::mt19937_64* seeded = nullptr;

NodeId DrawnRange() {
  static std::random_device device;
  static std::uniform_int_distribution<NodeId> draw(1, kRanges);
  return seeded != nullptr ? 1 + (*seeded)() % kRanges : draw(device);
}

// The next identity begins a range. The counter gives up a range as soon as an identity ahead of it
// is seen there.
void LeaveRange() {
  NodeIds& ids = NodeIds::Instance();
  ids.Seen(ids.Next() + 1);
}

}  // namespace

// Identities given before must have no part in those that follow, so the scope begins with a range
// of its own and leaves none half used.
SeededIds::SeededIds(std::uint64_t seed) : draw_(seed), former_(seeded) {
  LeaveRange();
  seeded = &draw_;
}

SeededIds::~SeededIds() {
  seeded = former_;
  LeaveRange();
}

NodeIds& NodeIds::Instance() {
  static NodeIds ids;
  return ids;
}

void NodeIds::Seen(NodeId id) {
  const NodeId range = id / kRange;
  if (range == lastSeen_) return;
  if (next_ != end_ && range == (end_ - 1) / kRange) {
    // A file turns out to use the counter's own range, too: the rest of it is given up.
    if (id >= next_) end_ = next_;
    return;
  }
  taken_.insert(range);
  lastSeen_ = range;
}

// A range that this process has drawn before is never drawn again, nor one that a file has brought:
// with 2^39 of them the loop ends at its first turn.
NodeId NodeIds::FirstOfNewRange() {
  NodeId range = DrawnRange();
  while (!taken_.insert(range).second) range = DrawnRange();
  next_ = range * kRange;
  end_ = next_ + kRange;
  return next_++;
}

NodeId IdOf(const GeListNode& node) { return A::Id(node); }

bool SetId(GeListNode& node, NodeId id) {
  const bool own = A::Kind(node) == NodeKind::Document;
  if (id == 0 || (node.GetDocument() && !own)) return false;
  NodeIds::Instance().Seen(id);
  // A document stands in its own table.
  if (own) {
    NodeTable& table = BodyOf(static_cast<BaseDocument&>(node)).table;
    if (!table.Add(id, static_cast<BaseList2D*>(&node))) return false;
    table.Remove(A::Id(node));
  }
  A::Id(node) = id;
  return true;
}

BaseList2D* FindNode(const BaseDocument* doc, NodeId id) {
  return doc && id ? BodyOf(*doc).table.Find(id) : nullptr;
}

}  // namespace engine
