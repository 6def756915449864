// RecordFinder: where a number of scene items stand among many records, found in one pass over the records and kept
// right while records are written. It owns neither. Main thread.
#pragma once

#include <set>
#include <unordered_map>
#include <vector>

#include "source/Stagemarks/Host.h"

namespace stagemarks {

class RecordFinder {
 public:
  // Each item once; null ones are found nowhere.
  RecordFinder(const BaseContainer& records, LONG linkKey, const BaseDocument* doc, const std::vector<BaseList2D*>& items);
  // Position of the first record that links to `item`, one of the items; -1 when there is none.
  LONG Position(const BaseList2D* item) const;
  // What the record at `position` links to now; null for position -1 and for a link that is gone.
  const BaseList2D* Target(LONG position) const;
  // The record at `position`, which linked to `before`, was written: takes note of what it links to now.
  void Written(LONG position, const BaseList2D* before);

 private:
  struct Place {
    const BaseList2D* item = nullptr;
    LONG first = NOTOK;
    Bool several = FALSE;
  };
  // Where `item` is, or the free place where it belongs.
  std::size_t PlaceOf(const BaseList2D* item) const;
  void Add(const BaseList2D* item, LONG position);
  void Remove(const BaseList2D* item, LONG position);

  const BaseContainer& records_;
  LONG linkKey_;
  const BaseDocument* doc_;
  std::vector<Place> places_;                                  // open addressing, a power of two and at most half full
  std::unordered_map<const BaseList2D*, std::set<LONG>> all_;  // of items with several records
};

}  // namespace stagemarks
