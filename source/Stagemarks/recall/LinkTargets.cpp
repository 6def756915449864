#include "source/Stagemarks/recall/LinkTargets.h"

#include <bit>

#include "source/Stagemarks/recall/AddressHash.h"

namespace stagemarks {

LinkTargets::LinkTargets(const BaseContainer* records, LONG linkKey, const BaseDocument* doc) {
  const LONG count = records ? records->GetCount() : 0;
  slots_.resize(std::bit_ceil(2 * static_cast<std::size_t>(count) + 2));
  for (LONG i = 0; i < count; ++i) {
    const BaseList2D* target = records->GetContainer(records->GetIndexId(i)).GetLink(linkKey, doc);
    if (target) slots_[Slot(target)] = target;
  }
}

std::size_t LinkTargets::Slot(const BaseList2D* item) const {
  const std::size_t mask = slots_.size() - 1;
  std::size_t slot = HashAddress(item, slots_.size());
  while (slots_[slot] && slots_[slot] != item) slot = (slot + 1) & mask;
  return slot;
}

}  // namespace stagemarks
