// LinkTargets: the scene items that the records of one part of an element link to, each link resolved once, so that
// asking for many items costs as many steps as there are records and items. A value that owns nothing in the scene;
// valid while neither the records nor the scene change. Main thread.
#pragma once

#include <vector>

#include "source/Stagemarks/Host.h"

namespace stagemarks {

class LinkTargets {
 public:
  // `records` may be null: none. Links that resolve to nothing in `doc` are left out.
  LinkTargets(const BaseContainer* records, LONG linkKey, const BaseDocument* doc);
  Bool Contains(const BaseList2D* item) const { return slots_[Slot(item)] == item; }

 private:
  // Where `item` is, or the free place where it belongs.
  std::size_t Slot(const BaseList2D* item) const;

  std::vector<const BaseList2D*> slots_;  // open addressing, a power of two and at most half full
};

}  // namespace stagemarks
