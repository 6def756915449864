#include "source/Stagemarks/recall/LinkTargets.h"

#include <bit>
#include <cstdint>

namespace stagemarks {

LinkTargets::LinkTargets(const BaseContainer* records, LONG linkKey, const BaseDocument* doc) {
  const LONG count = records ? records->GetCount() : 0;
  slots_.resize(std::bit_ceil(2 * static_cast<std::size_t>(count) + 2));
  for (LONG i = 0; i < count; ++i) {
    const BaseContainer* record = records->GetContainerInstance(records->GetIndexId(i));
    const BaseList2D* target = record ? record->GetLink(linkKey, doc) : nullptr;
    if (target) slots_[Slot(target)] = target;
  }
}

std::size_t LinkTargets::Slot(const BaseList2D* item) const {
  constexpr std::uint64_t kGoldenRatio = 0x9E3779B97F4A7C15;
  const std::size_t mask = slots_.size() - 1;
  const std::uint64_t hash = reinterpret_cast<std::uintptr_t>(item) * kGoldenRatio;
  std::size_t slot = static_cast<std::size_t>(hash >> 32) & mask;
  while (slots_[slot] && slots_[slot] != item) slot = (slot + 1) & mask;
  return slot;
}

}  // namespace stagemarks
