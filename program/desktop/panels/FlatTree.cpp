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

FlatTree FlatTree::Kept(const std::function<bool(engine::NodeId)>& keep) const {
  std::vector<int> newPlaces(entries_.size(), 0);  // first 1 for those that stay
  for (std::size_t place = entries_.size() - 1; place > 0; --place) {
    if (newPlaces[place] == 0 && !keep(entries_[place].id)) continue;
    newPlaces[place] = 1;
    newPlaces[static_cast<std::size_t>(entries_[place].parent)] = 1;
  }
  FlatTree kept;
  newPlaces[0] = 0;
  for (std::size_t place = 1; place < entries_.size(); ++place) {
    if (newPlaces[place] == 0) continue;
    const int parent = newPlaces[static_cast<std::size_t>(entries_[place].parent)];
    newPlaces[place] = static_cast<int>(kept.entries_.size());
    Entry& above = kept.entries_[static_cast<std::size_t>(parent)];
    if (above.childCount == 0) above.firstChild = newPlaces[place];
    kept.places_[entries_[place].id] = newPlaces[place];
    const int row = above.childCount++;
    kept.entries_.push_back({entries_[place].id, parent, row});
  }
  return kept;
}

int FlatTree::PlaceOf(engine::NodeId id) const {
  const auto it = places_.find(id);
  return it == places_.end() ? 0 : it->second;
}

}  // namespace desktop
