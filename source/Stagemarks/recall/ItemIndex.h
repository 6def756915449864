// ItemIndex: from a scene item to its place in a list of items. Asked in the order of the list it
// answers without searching, because records mostly stand in the order of the scene; a table for
// the other cases is made when the first one comes. It does not own the list, which must outlive it
// unchanged. Main thread.
#pragma once

#include <cstdint>
#include <vector>

#include "source/Stagemarks/Host.h"

namespace stagemarks {

using Items = std::vector<BaseList2D*>;

class ItemIndex {
 public:
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

  // Each item once.
  explicit ItemIndex(const Items& items) : items_(items) {}
  // The item's place, counted from 0; kNone for null and for an item that is not in the list.
  std::size_t Find(const BaseList2D* item);

 private:
  // Where in the table the item's place is noted, or would be.
  std::size_t SlotOf(const BaseList2D* item) const;
  void MakeTable();

  const Items& items_;
  std::size_t next_ = 0;              // behind the item found last
  std::vector<std::uint32_t> table_;  // places + 1 by address, open addressing, at most half full
};

}  // namespace stagemarks
