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
