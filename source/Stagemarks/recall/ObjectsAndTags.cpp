#include "source/Stagemarks/SMDialog.h"
#include "source/Stagemarks/keys/CompositingKeys.h"
#include "source/Stagemarks/keys/ElementKeys.h"

namespace stagemarks {

namespace {

// The record goes in as it stands, its link to the tag included.
void ApplyGeneric(BaseTag& tag, const BaseContainer& record) {
  BaseContainer* data = tag.GetDataInstance();
  data->FlushAll();
  data->MergeContainer(record);
}

void ApplyCompositing(BaseTag& tag, const BaseContainer& record) {
  BaseContainer data = tag.GetData();
  for (const CompositingRow& row : kCompositing) data.SetParameter(DescID(row.parameter), record.GetData(row.key));
  tag.SetData(data, FALSE);
}

void ApplyTag(BaseDocument& doc, BaseTag& tag, const BaseContainer& record, Capture capture) {
  doc.AddUndo(UNDO_CHANGE, &tag);
  switch (capture) {
    case Capture::Texture:
      static_cast<TextureTag&>(tag).SetMaterial(record.GetMaterialLink(kMaterialLink, &doc));
      break;
    case Capture::Compositing:
      ApplyCompositing(tag, record);
      break;
    case Capture::Generic:
      ApplyGeneric(tag, record);
      break;
  }
}

// Counts positions but fetches by key, as the recording wrote the keys; what lies under other keys is not applied.
void ApplyObjects(BaseDocument& doc, const BaseContainer& objects) {
  const LONG count = objects.GetCount();
  for (LONG i = 0; i < count; ++i) {
    const BaseContainer record = objects.GetContainer(i);
    BaseObject* object = record.GetObjectLink(kObjectLink, &doc);
    if (!object) continue;
    doc.AddUndo(UNDO_CHANGE, object);
    object->SetEditorMode(record.GetLong(kEditorMode));
    object->SetRenderMode(record.GetLong(kRenderMode));
    object->SetDeformMode(record.GetLong(kDeformMode) != 0);
  }
}

}  // namespace

Bool SMDialog::LoadObjectAndTagSettings(const BaseContainer& record) {
  BaseDocument* doc = GetActiveDocument();
  if (!doc) return FALSE;
  if (IsOn(Option::Objects)) ApplyObjects(*doc, record.GetContainer(kObjects));
  const BaseContainer tags = record.GetContainer(kTags);
  const LONG count = tags.GetCount();
  for (LONG i = 0; i < count; ++i) {
    const BaseContainer one = tags.GetContainer(i);
    BaseList2D* target = one.GetLink(kTagLink, doc);
    const TagTypeRow* type = target ? FindTagType(target->GetType()) : nullptr;
    if (type && IsOn(type->option)) ApplyTag(*doc, *static_cast<BaseTag*>(target), one, type->capture);
  }
  return TRUE;
}

}  // namespace stagemarks
