#include "source/Stagemarks/bulk/RecordFinder.h"

#include <bit>

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

std::size_t ItemIndex::Find(const BaseList2D* item) {
  if (!item) return kNone;
  if (next_ < items_.size() && items_[next_] == item) return next_++;
  if (table_.empty()) MakeTable();
  const std::uint32_t noted = table_[SlotOf(item)];
  if (noted == 0) return kNone;
  next_ = noted;
  return noted - 1;
}

std::size_t ItemIndex::SlotOf(const BaseList2D* item) const {
  constexpr std::uint64_t kGoldenRatio = 0x9E3779B97F4A7C15;
  const std::size_t mask = table_.size() - 1;
  std::size_t slot =
      static_cast<std::size_t>((reinterpret_cast<std::uintptr_t>(item) * kGoldenRatio) >> 32) &
      mask;
  while (table_[slot] != 0 && items_[table_[slot] - 1] != item) slot = (slot + 1) & mask;
  return slot;
}

void ItemIndex::MakeTable() {
  table_.resize(std::bit_ceil(2 * items_.size() + 2));
  for (std::size_t i = 0; i < items_.size(); ++i) {
    if (items_[i]) table_[SlotOf(items_[i])] = static_cast<std::uint32_t>(i + 1);
  }
}

}  // namespace stagemarks
