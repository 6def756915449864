#include "source/Stagemarks/recall/ItemIndex.h"

#include <bit>

namespace stagemarks {

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
