#include "engine/scene/SelectionOrder.h"

#include <algorithm>
#include <functional>
#include <unordered_set>

#include "engine/scene/NodeIds.h"

namespace engine {

using host::BaseList2D;

namespace {

BaseList2D* Selected(NodeId id, const NodeTable& nodes) {
  BaseList2D* node = nodes.Find(id);
  return node && node->GetBit(host::BIT_ACTIVE) ? node : nullptr;
}

}  // namespace

void SelectionOrder::Add(NodeId id, const NodeTable& nodes) {
  if (ids_.size() >= tidyAt_) Tidy(nodes);
  ids_.push_back(id);
}

void SelectionOrder::DeselectAll(const NodeTable& nodes) {
  for (const NodeId id : ids_) {
    if (BaseList2D* node = Selected(id, nodes)) node->DelBit(host::BIT_ACTIVE);
  }
  ids_.clear();
  tidyAt_ = kFirstTidy;
}

// Those at the end that are not selected any more are forgotten on the way: one that is selected
// again is added again.
BaseList2D* SelectionOrder::Last(const NodeTable& nodes) {
  while (!ids_.empty()) {
    if (BaseList2D* node = Selected(ids_.back(), nodes)) return node;
    ids_.pop_back();
  }
  return nullptr;
}

std::vector<BaseList2D*> SelectionOrder::InOrder(const NodeTable& nodes) const {
  std::vector<BaseList2D*> order;
  order.reserve(ids_.size());
  // Elements selected in the order of their making, as all of a scene are at once, need no look at
  // what was there before.
  const bool ascends =
      std::adjacent_find(ids_.begin(), ids_.end(), std::greater_equal<>()) == ids_.end();
  std::unordered_set<NodeId> seen;
  for (auto id = ids_.rbegin(); id != ids_.rend(); ++id) {
    BaseList2D* node = Selected(*id, nodes);
    if (node && (ascends || seen.insert(*id).second)) order.push_back(node);
  }
  std::reverse(order.begin(), order.end());
  return order;
}

// Twice as many until the next time, so that tidying costs each selection a constant share.
void SelectionOrder::Tidy(const NodeTable& nodes) {
  const std::vector<BaseList2D*> order = InOrder(nodes);
  ids_.clear();
  for (const BaseList2D* node : order) ids_.push_back(IdOf(*node));
  tidyAt_ = std::max(kFirstTidy, 2 * ids_.size());
}

}  // namespace engine
