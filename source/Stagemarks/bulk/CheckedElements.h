// CheckedElements: the records of the checked elements, in place in the active document's store and
// in list order, for the operations that change them all. It owns nothing; valid while the stores
// stay. Main thread.
#pragma once

#include "source/Stagemarks/bulk/ElementNames.h"

namespace stagemarks {

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

}  // namespace stagemarks
