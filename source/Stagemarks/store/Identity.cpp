#include "source/Stagemarks/store/Identity.h"

#include "source/Stagemarks/SMDialog.h"
#include "source/Stagemarks/keys/ElementKeys.h"

namespace stagemarks {

namespace {

Bool HasName(const BaseContainer& entry, const String& name) {
  return entry.GetString(kName).Compare(name) == 0;
}

}  // namespace

LONG ElementPositions(const BaseContainer& listStore) {
  const Bool hasNote =
      listStore.FindIndex(kListBuilt) != NOTOK && listStore.GetType(kListBuilt) != DA_CONTAINER;
  return listStore.GetCount() - (hasNote ? 1 : 0);
}

LONG SMDialog::GetFirstAvailableID() const {
  LONG id = 0;
  while (listStore_.GetContainer(id).GetCount() > 0) ++id;
  return id;
}

// Counts positions but fetches by ID: an element whose ID is not below the number of elements is
// not found. Scenes in which that happened hold two elements of one name, and only this rule brings
// back the one that was meant.
LONG SMDialog::GetStagemarkID(const String& name) const {
  const LONG count = ElementPositions(listStore_);
  for (LONG id = 0; id < count; ++id) {
    const BaseContainer entry = listStore_.GetContainer(id);
    if (HasName(entry, name)) return entry.GetId();
  }
  return 0;
}

// The records bound the walk and the list entries give the names, as in GetStagemarkID by ID.
Bool SMDialog::CheckForDupSMNames(const String& name) const {
  const LONG count = recordStore_.GetCount();
  for (LONG id = 0; id < count; ++id) {
    if (HasName(listStore_.GetContainer(id), name)) return TRUE;
  }
  return FALSE;
}

}  // namespace stagemarks
