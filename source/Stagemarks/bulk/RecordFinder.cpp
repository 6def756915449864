#include "source/Stagemarks/bulk/RecordFinder.h"

#include <bit>

#include "source/Stagemarks/recall/AddressHash.h"

namespace stagemarks {

RecordFinder::RecordFinder(const BaseContainer& records, LONG linkKey, const BaseDocument* doc,
                           const std::vector<BaseList2D*>& items)
    : records_(records), linkKey_(linkKey), doc_(doc), places_(std::bit_ceil(2 * items.size() + 2)) {
  for (const BaseList2D* item : items) {
    if (item) places_[PlaceOf(item)].item = item;
  }
  const LONG count = items.empty() ? 0 : records.GetCount();
  for (LONG i = 0; i < count; ++i) Add(Target(i), i);
}

LONG RecordFinder::Position(const BaseList2D* item) const { return places_[PlaceOf(item)].first; }

const BaseList2D* RecordFinder::Target(LONG position) const {
  if (position == NOTOK) return nullptr;
  return records_.GetContainer(records_.GetIndexId(position)).GetLink(linkKey_, doc_);
}

void RecordFinder::Written(LONG position, const BaseList2D* before) {
  const BaseList2D* now = Target(position);
  if (now == before) return;
  Remove(before, position);
  Add(now, position);
}

std::size_t RecordFinder::PlaceOf(const BaseList2D* item) const {
  const std::size_t mask = places_.size() - 1;
  std::size_t place = HashAddress(item, places_.size());
  while (places_[place].item && places_[place].item != item) place = (place + 1) & mask;
  return place;
}

void RecordFinder::Add(const BaseList2D* item, LONG position) {
  Place& place = places_[PlaceOf(item)];
  if (!item || place.item != item) return;
  if (place.first == NOTOK) {
    place.first = position;
    return;
  }
  std::set<LONG>& positions = all_[item];
  if (!place.several) positions = {place.first};
  positions.insert(position);
  place.several = TRUE;
  place.first = *positions.begin();
}

void RecordFinder::Remove(const BaseList2D* item, LONG position) {
  Place& place = places_[PlaceOf(item)];
  if (!item || place.item != item) return;
  if (!place.several) {
    place.first = NOTOK;
    return;
  }
  std::set<LONG>& positions = all_[item];
  positions.erase(position);
  place.first = positions.empty() ? NOTOK : *positions.begin();
  place.several = !positions.empty();
}

}  // namespace stagemarks
