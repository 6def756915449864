// The dialog's copies of the document's stores, taken whole and written back whole, and deleting an
// element in the document's own.
#include "source/Stagemarks/SMDialog.h"
#include "source/Stagemarks/keys/ElementKeys.h"

namespace stagemarks {

namespace {

// The container under `element` in one of the document's stores, in place; null where there is
// none.
BaseContainer* StoredInPlace(BaseDocument& doc, LONG store, LONG element) {
  BaseContainer* elements = doc.GetDataInstance()->GetContainerInstance(store);
  return elements ? elements->GetContainerInstance(element) : nullptr;
}

void FreeRenderSettings(const BaseDocument& doc, const BaseContainer& record) {
  BaseList2D* recorded = record.GetContainer(kRender).GetLink(kRenderLink, &doc);
  if (!recorded || !recorded->IsInstanceOf(Rbase)) return;
  RenderData* settings = static_cast<RenderData*>(recorded);
  RenderData::Free(settings);
}

}  // namespace

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

// Record and entry stay in place, empty: their ID is free for the next recording, and elements with
// higher IDs are still found by name.
void SMDialog::EmptyElement(BaseDocument& doc, LONG element) const {
  if (BaseContainer* record = StoredInPlace(doc, kRecordStore, element)) {
    FreeRenderSettings(doc, *record);
    record->FlushAll();
  }
  if (BaseContainer* entry = StoredInPlace(doc, kListStore, element)) entry->FlushAll();
}

Bool SMDialog::DeleteStagemark(const String& name) {
  BaseDocument* doc = GetActiveDocument();
  if (!doc) return FALSE;
  listStore_ = doc->GetDataInstance()->GetContainer(kListStore);
  EmptyElement(*doc, GetStagemarkID(name));
  doc->SetChanged();
  UpdateSMList();
  list_.DataChanged();
  GeFKill(GetPreviewImage(name), 0);
  doc->Message(MSG_UPDATE);
  EventAdd();
  return TRUE;
}

}  // namespace stagemarks
