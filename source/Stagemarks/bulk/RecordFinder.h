// RecordFinder: where a number of scene items stand among many records, found in one pass over the
// records and kept right while records are written. It owns neither. Main thread.
#pragma once

#include <set>
#include <unordered_map>
#include <vector>

#include "source/Stagemarks/recall/ItemIndex.h"

namespace stagemarks {

class RecordFinder {
 public:
  // Each item once; null ones are found nowhere.
  RecordFinder(const BaseContainer& records, LONG linkKey, const BaseDocument* doc,
               const Items& items);
  // Position of the first record that links to the item at place `item` of the list; -1 when there
  // is none.
  LONG Position(std::size_t item) const { return first_[item]; }
  // What the record at `position` links to now; null for position -1 and for a link that is gone.
  const BaseList2D* Target(LONG position) const;
  // The record at `position`, which linked to `before`, was written: takes note of what it links to
  // now.
  void Written(LONG position, const BaseList2D* before);

 private:
  void Add(std::size_t item, LONG position);
  void Remove(std::size_t item, LONG position);

  const BaseContainer& records_;
  LONG linkKey_;
  const BaseDocument* doc_;
  ItemIndex index_;
  std::vector<LONG> first_;                              // by item
  std::unordered_map<std::size_t, std::set<LONG>> all_;  // of items that have had several records
};

}  // namespace stagemarks
