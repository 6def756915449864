// The dialog's copies of the document's stores, taken whole and written back whole.
#include "source/Stagemarks/SMDialog.h"
#include "source/Stagemarks/keys/ElementKeys.h"

namespace stagemarks {

void SMDialog::RefreshStores(const BaseDocument& doc) {
  const BaseContainer& data = *doc.GetDataInstance();
  recordStore_ = data.GetContainer(kRecordStore);
  listStore_ = data.GetContainer(kListStore);
}

void SMDialog::WriteStores(BaseDocument& doc) const {
  BaseContainer& data = *doc.GetDataInstance();
  data.SetContainer(kRecordStore, recordStore_);
  data.SetContainer(kListStore, listStore_);
  doc.SetChanged();
}

// Emptied entries stay empty: one flag in them and their ID would never be free again.
void SMDialog::MarkCurrent(BaseDocument& doc, LONG element) {
  BaseContainer* entries = doc.GetDataInstance()->GetContainerInstance(kListStore);
  if (!entries) return;
  const LONG count = entries->GetCount();
  for (LONG i = 0; i < count; ++i) {
    const LONG id = entries->GetIndexId(i);
    const BaseContainer entry = entries->GetContainer(id);
    const Bool isCurrent = id == element;
    const Bool isRight = entry.FindIndex(kCurrent) != NOTOK && entry.GetBool(kCurrent) == isCurrent;
    if (entry.GetCount() > 0 && !isRight)
      entries->GetContainerInstance(id)->SetBool(kCurrent, isCurrent);
  }
}

BaseContainer SMDialog::CurrentRecord() const {
  const LONG count = listStore_.GetCount();
  for (LONG i = 0; i < count; ++i) {
    const LONG id = listStore_.GetIndexId(i);
    if (listStore_.GetContainer(id).GetBool(kCurrent)) return recordStore_.GetContainer(id);
  }
  return BaseContainer();
}

}  // namespace stagemarks
