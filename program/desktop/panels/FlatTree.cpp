#include "program/desktop/panels/FlatTree.h"

namespace desktop {

FlatTree::FlatTree(const host::GeListNode* first) : entries_(1) {
  std::vector<const host::GeListNode*> nodes = {nullptr};
  for (std::size_t place = 0; place < nodes.size(); ++place) {
    const host::GeListNode* child = place > 0 ? nodes[place]->GetDown() : first;
    entries_[place].firstChild = static_cast<int>(entries_.size());
    for (; child; child = child->GetNext()) {
      places_[engine::IdOf(*child)] = static_cast<int>(entries_.size());
      entries_.push_back({engine::IdOf(*child), static_cast<int>(place), entries_[place].childCount++});
      nodes.push_back(child);
    }
  }
}

int FlatTree::PlaceOf(engine::NodeId id) const {
  const auto it = places_.find(id);
  return it == places_.end() ? 0 : it->second;
}

}  // namespace desktop
