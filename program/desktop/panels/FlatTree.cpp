#include "program/desktop/panels/FlatTree.h"

#include <bit>
#include <random>

namespace desktop {

namespace {

// Where to look first in a table of so many slots, a power of 2. Different in every process: a file
// cannot choose identities that fall onto one slot.
std::size_t FirstSlot(engine::NodeId id, std::size_t slotCount) {
  static const engine::NodeId factor =
      (engine::NodeId{std::random_device()()} << 32 | std::random_device()()) | 1;
  return static_cast<std::size_t>((id * factor) >> (64 - std::bit_width(slotCount - 1)));
}

}  // namespace

FlatTree::FlatTree(const host::GeListNode* first) : entries_(1) {
  std::vector<const host::GeListNode*> nodes = {nullptr};
  for (std::size_t place = 0; place < nodes.size(); ++place) {
    const host::GeListNode* child = place > 0 ? nodes[place]->GetDown() : first;
    entries_[place].firstChild = static_cast<int>(entries_.size());
    for (; child; child = child->GetNext()) {
      entries_.push_back(
          {engine::IdOf(*child), static_cast<int>(place), entries_[place].childCount++});
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
    const int row = above.childCount++;
    kept.entries_.push_back({entries_[place].id, parent, row});
  }
  return kept;
}

int FlatTree::PlaceOf(engine::NodeId id) const {
  if (id == 0 || entries_.size() == 1) return 0;
  if (!places_) {
    std::vector<int> places(std::bit_ceil(2 * entries_.size()), 0);
    for (std::size_t place = 1; place < entries_.size(); ++place) {
      std::size_t slot = FirstSlot(entries_[place].id, places.size());
      while (places[slot] != 0) slot = (slot + 1) % places.size();
      places[slot] = static_cast<int>(place);
    }
    places_ = std::make_shared<const std::vector<int>>(std::move(places));
  }
  std::size_t slot = FirstSlot(id, places_->size());
  while ((*places_)[slot] != 0 && At((*places_)[slot]).id != id)
    slot = (slot + 1) % places_->size();
  return (*places_)[slot];
}

}  // namespace desktop
