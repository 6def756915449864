// RecordFinder: where a few scene items stand among many records, found in one pass over the records and kept right
// while records are written. It owns neither. Main thread.
#pragma once

#include <set>
#include <unordered_map>
#include <vector>

#include "source/Stagemarks/Host.h"

namespace stagemarks {

class RecordFinder {
 public:
  // Null items are passed over.
  RecordFinder(const BaseContainer& records, LONG linkKey, const BaseDocument* doc, const std::vector<BaseList2D*>& items);
  // Position of the first record that links to `item`, one of the items; -1 when there is none.
  LONG Position(const BaseList2D* item) const;
  // The record at `position` was written: takes note of what it links to now.
  void Written(LONG position);

 private:
  const BaseContainer& records_;
  LONG linkKey_;
  const BaseDocument* doc_;
  std::unordered_map<const BaseList2D*, std::set<LONG>> positions_;  // by item
  std::unordered_map<LONG, const BaseList2D*> targets_;              // by position, items only
};

}  // namespace stagemarks
