// ElementNames: the answers of SMDialog::GetStagemarkID for one state of the list store, looked up
// once for many names. It follows that function to the letter: only IDs below the number of entries
// are examined, the lowest element of a name wins, and an unknown name means ID 0. A value. Main
// thread.
#pragma once

#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "source/Stagemarks/Host.h"

namespace stagemarks {

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

}  // namespace stagemarks
