#include "source/Stagemarks/bulk/RecordFinder.h"

namespace stagemarks {

RecordFinder::RecordFinder(const BaseContainer& records, LONG linkKey, const BaseDocument* doc,
                           const std::vector<BaseList2D*>& items)
    : records_(records), linkKey_(linkKey), doc_(doc) {
  for (const BaseList2D* item : items) {
    if (item) positions_[item];
  }
  const LONG count = positions_.empty() ? 0 : records.GetCount();
  for (LONG i = 0; i < count; ++i) Written(i);
}

LONG RecordFinder::Position(const BaseList2D* item) const {
  const auto found = positions_.find(item);
  return found == positions_.end() || found->second.empty() ? NOTOK : *found->second.begin();
}

void RecordFinder::Written(LONG position) {
  const auto before = targets_.find(position);
  if (before != targets_.end()) {
    positions_[before->second].erase(position);
    targets_.erase(before);
  }
  const BaseContainer* record = records_.GetContainerInstance(records_.GetIndexId(position));
  const auto now = positions_.find(record ? record->GetLink(linkKey_, doc_) : nullptr);
  if (now == positions_.end()) return;
  now->second.insert(position);
  targets_[position] = now->first;
}

}  // namespace stagemarks
