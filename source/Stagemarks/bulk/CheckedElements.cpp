#include "source/Stagemarks/bulk/CheckedElements.h"

#include "source/Stagemarks/keys/ElementKeys.h"
#include "source/Stagemarks/store/Identity.h"

namespace stagemarks {

ElementNames::ElementNames(const BaseContainer& listStore) {
  const LONG count = ElementPositions(listStore);
  entries_.reserve(static_cast<std::size_t>(count));
  for (LONG key = 0; key < count; ++key) {
    const BaseContainer entry = listStore.GetContainer(key);
    entries_.push_back({entry.GetString(kName).ToUtf8(), entry.GetId()});
    keys_[entries_.back().name].insert(key);
  }
}

LONG ElementNames::Find(const String& name) const {
  const auto found = keys_.find(name.ToUtf8());
  if (found == keys_.end() || found->second.empty()) return 0;
  return entries_[static_cast<std::size_t>(*found->second.begin())].id;
}

void ElementNames::Empty(LONG key) {
  if (key < 0 || key >= static_cast<LONG>(entries_.size())) return;
  Entry& entry = entries_[static_cast<std::size_t>(key)];
  keys_[entry.name].erase(key);
  entry.name.clear();
  keys_[entry.name].insert(key);
}

}  // namespace stagemarks
