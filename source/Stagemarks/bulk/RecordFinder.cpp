#include "source/Stagemarks/bulk/RecordFinder.h"

namespace stagemarks {

RecordFinder::RecordFinder(const BaseContainer& records, LONG linkKey, const BaseDocument* doc,
                           const Items& items)
    : records_(records), linkKey_(linkKey), doc_(doc), index_(items), first_(items.size(), NOTOK) {
  const LONG count = items.empty() ? 0 : records.GetCount();
  for (LONG i = 0; i < count; ++i) Add(index_.Find(Target(i)), i);
}

const BaseList2D* RecordFinder::Target(LONG position) const {
  if (position == NOTOK) return nullptr;
  return records_.GetContainer(records_.GetIndexId(position)).GetLink(linkKey_, doc_);
}

void RecordFinder::Written(LONG position, const BaseList2D* before) {
  const BaseList2D* now = Target(position);
  if (now == before) return;
  Remove(index_.Find(before), position);
  Add(index_.Find(now), position);
}

void RecordFinder::Add(std::size_t item, LONG position) {
  if (item == ItemIndex::kNone) return;
  if (first_[item] == NOTOK && all_.count(item) == 0) {
    first_[item] = position;
    return;
  }
  std::set<LONG>& positions = all_[item];
  if (first_[item] != NOTOK) positions.insert(first_[item]);
  positions.insert(position);
  first_[item] = *positions.begin();
}

void RecordFinder::Remove(std::size_t item, LONG position) {
  if (item == ItemIndex::kNone) return;
  const auto several = all_.find(item);
  if (several == all_.end()) {
    first_[item] = NOTOK;
    return;
  }
  several->second.erase(position);
  first_[item] = several->second.empty() ? NOTOK : *several->second.begin();
}

}  // namespace stagemarks
