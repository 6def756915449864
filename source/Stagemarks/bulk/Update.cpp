// "Update Checked Elements": appends the scene's new items to the checked elements. What an element
// holds already stays as it is, and the options have no say.
#include "source/Stagemarks/SMDialog.h"
#include "source/Stagemarks/bulk/CheckedElements.h"
#include "source/Stagemarks/keys/ElementKeys.h"
#include "source/Stagemarks/recording/Records.h"

namespace stagemarks {

Bool SMDialog::UpdateCheckedElements() {
  const BaseContainer checked = GetCheckedElements();
  BaseDocument* doc = GetActiveDocument();
  BaseContainer* store = doc ? doc->GetDataInstance()->GetContainerInstance(kRecordStore) : nullptr;
  if (!store) return FALSE;
  listStore_ = doc->GetDataInstance()->GetContainer(kListStore);
  return CheckedElements(*store, checked, listStore_).ForEach([&](BaseContainer& element) {
    return AppendNewObjects(*doc, element) && AppendNewTags(*doc, element) &&
           AppendNewLayers(*doc, element);
  });
}

Bool SMDialog::AppendNewObjects(const BaseDocument& doc, BaseContainer& element) const {
  BaseContainer* objects = element.GetContainerInstance(kObjects);
  if (!objects) return FALSE;
  FreeKeys keys(*objects);
  const BaseContainer found = GetNewObjects(&element);
  for (LONG i = 0; i < found.GetCount(); ++i) {
    const BaseObject* op = found.GetObjectLink(i, &doc);
    if (!op) continue;
    const LONG key = keys.Next();
    objects->SetContainer(key, ObjectRecord(*op, key));
  }
  return TRUE;
}

Bool SMDialog::AppendNewTags(const BaseDocument& doc, BaseContainer& element) const {
  BaseContainer* tags = element.GetContainerInstance(kTags);
  if (!tags) return FALSE;
  FreeKeys keys(*tags);
  const BaseContainer found = GetNewTags(&element);
  for (LONG i = 0; i < found.GetCount(); ++i) {
    BaseTag* tag = static_cast<BaseTag*>(found.GetLink(i, &doc));
    const TagTypeRow* row = tag ? FindTagType(tag->GetType()) : nullptr;
    if (!row) continue;
    const LONG key = keys.Next();
    BaseContainer record = CaptureTag(tag, row->capture);
    record.SetId(key);
    record.SetLink(kTagLink, tag);
    tags->SetContainer(key, record);
  }
  return TRUE;
}

Bool SMDialog::AppendNewLayers(const BaseDocument& doc, BaseContainer& element) const {
  BaseContainer* layers = element.GetContainerInstance(kLayers);
  if (!layers) return FALSE;
  FreeKeys keys(*layers);
  const BaseContainer found = GetNewLayers(&element);
  for (LONG i = 0; i < found.GetCount(); ++i) {
    const BaseList2D* layer = found.GetLink(i, &doc);
    if (!layer) continue;
    const LONG key = keys.Next();
    layers->SetContainer(key, LayerRecord(*layer, &doc, key));
  }
  return TRUE;
}

}  // namespace stagemarks
