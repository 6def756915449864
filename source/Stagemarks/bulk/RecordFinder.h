// Search for the items of a scene that records link to, in one pass over them. ItemIndex knows the
// items' places in a list, RecordFinder the records' positions, kept right while records are
// written. The link alone is an item's identity. They own neither items nor records, which must
// outlive them. Main thread.
#pragma once

#include <cstdint>
#include <set>
#include <unordered_map>
#include <vector>

#include "source/Stagemarks/Host.h"

namespace stagemarks {

using Items = std::vector<BaseList2D*>;

// From a scene item to its place in a list of items. Asked in the order of the list it answers
// without searching, because records mostly stand in the order of the scene; a table for the other
// cases is made when the first one comes.
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

// Where a number of scene items stand among many records.
class RecordFinder {
 public:
  // Each item once; null ones are found nowhere.
  RecordFinder(const BaseContainer& records, LONG linkKey, const BaseDocument* doc,
               const Items& items);
  // Position of the first record that links to the item at place `item` of the list; -1 when there
  // is none.
  LONG Position(std::size_t item) const { return first_[item]; }
  // Present target of the record at `position`; null for position -1 and for a link that is gone.
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
