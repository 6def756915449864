// The elements that a bulk edit works on: CheckedElements are their records, in place in the active
// document's store and in list order; ElementNames finds an element's ID for many names at once;
// FreeKeys hands out keys for new records. They own nothing of the stores and are valid while those
// stay. Main thread.
#pragma once

#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "source/Stagemarks/Host.h"

namespace stagemarks {

// The answers of SMDialog::GetStagemarkID for one state of the list store, looked up once for many
// names. It follows that function to the letter: only IDs below the number of entries are examined,
// the lowest element of a name wins, and an unknown name means ID 0. A value.
class ElementNames {
 public:
  explicit ElementNames(const BaseContainer& listStore);
  // The own ID of the first examined entry with that name, else 0.
  LONG Find(const String& name) const;
  // The entry stored under `key` was emptied: it is called "" from now on.
  void Empty(LONG key);

 private:
  struct Entry {
    std::string name;
    LONG id = 0;  // the entry's own ID, 0 where nothing is stored
  };
  std::vector<Entry> entries_;                            // by key, as far as they are examined
  std::unordered_map<std::string, std::set<LONG>> keys_;  // by name
};

// The records of the checked elements, for the operations that change them all.
class CheckedElements {
 public:
  // `checked` are names under row numbers, `listStore` is the document's as it is now.
  CheckedElements(BaseContainer& recordStore, const BaseContainer& checked,
                  const BaseContainer& listStore)
      : recordStore_(recordStore), checked_(checked), names_(listStore) {}

  Bool IsEmpty() const { return checked_.GetCount() == 0; }

  // Calls `change` with each record. Ends with false at the first name that no record stands for
  // and where `change` answers false; what was changed before stays.
  template <class Change>
  Bool ForEach(Change change) const {
    for (LONG i = 0, row = 0; (row = checked_.GetIndexId(i)) != NOTOK; ++i) {
      BaseContainer* record =
          recordStore_.GetContainerInstance(names_.Find(checked_.GetString(row)));
      if (!record || !change(*record)) return FALSE;
    }
    return TRUE;
  }

 private:
  BaseContainer& recordStore_;
  BaseContainer checked_;
  ElementNames names_;
};

// Hands out the lowest keys that a container has no entry under, in ascending order, without
// looking at any key twice. The container may only grow by the keys handed out meanwhile.
class FreeKeys {
 public:
  explicit FreeKeys(const BaseContainer& container) : container_(container) {}

  LONG Next() {
    while (container_.FindIndex(next_) != NOTOK) ++next_;
    return next_++;
  }

 private:
  const BaseContainer& container_;
  LONG next_ = 0;
};

}  // namespace stagemarks
