#include "source/Stagemarks/SMDialog.h"
#include "source/Stagemarks/keys/ElementKeys.h"
#include "source/Stagemarks/keys/TagTypes.h"

namespace stagemarks {

namespace {

// The record goes in as it stands, its link to the tag included.
void ApplyGeneric(BaseTag& tag, const BaseContainer& record) {
  BaseContainer* data = tag.GetDataInstance();
  data->FlushAll();
  data->MergeContainer(record);
}

Bool IsFlat(const BaseContainer& data) {
  const LONG count = data.GetCount();
  for (LONG i = 0; i < count; ++i) {
    if (data.GetType(data.GetIndexId(i)) == DA_CONTAINER) return FALSE;
  }
  return TRUE;
}

// Applies records to compositing tags. Of many tags that are alike and get alike values the first
// one is written, the others share what came out.
class CompositingRecall {
 public:
  void Apply(BaseTag& tag, const BaseContainer& record) {
    if (!IsLikeBefore(tag, record)) Write(tag, record);
    tag.SetData(result_, FALSE);
  }

 private:
  // Containers are equal whatever their own IDs, so those with others inside are not compared.
  Bool IsLikeBefore(const BaseTag& tag, const BaseContainer& record) {
    const BaseContainer& data = *tag.GetDataInstance();
    if (result_.GetCount() == 0 || data_.GetId() != data.GetId() || data_ != data) return FALSE;
    record_.SetId(record.GetId());
    record_.SetLink(kTagLink, &tag);
    if (record_ != record) return FALSE;
    if (!isChecked_) isFlat_ = IsFlat(data_) && IsFlat(record_);
    isChecked_ = TRUE;
    return isFlat_;
  }

  void Write(const BaseTag& tag, const BaseContainer& record) {
    result_ = data_ = tag.GetData();
    record_ = record;
    isChecked_ = FALSE;
    for (const CompositingRow& row : kCompositing)
      result_.SetData(row.parameter, record.GetData(row.key));
  }

  BaseContainer data_;    // of the tag written last, before and
  BaseContainer result_;  // after
  BaseContainer record_;
  Bool isChecked_ = FALSE;
  Bool isFlat_ = FALSE;
};

void ApplyTag(BaseDocument& doc, BaseTag& tag, const BaseContainer& record, Capture capture,
              CompositingRecall& compositing) {
  doc.AddUndo(UNDO_CHANGE, &tag);
  switch (capture) {
    case Capture::Texture:
      static_cast<TextureTag&>(tag).SetMaterial(record.GetMaterialLink(kMaterialLink, &doc));
      break;
    case Capture::Compositing:
      compositing.Apply(tag, record);
      break;
    case Capture::Generic:
      ApplyGeneric(tag, record);
      break;
  }
}

// Counts positions but fetches by key, as the recording wrote the keys; what lies under other keys
// is not applied.
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
  CompositingRecall compositing;
  for (LONG i = 0; i < count; ++i) {
    const BaseContainer one = tags.GetContainer(i);
    BaseList2D* target = one.GetLink(kTagLink, doc);
    const TagTypeRow* type = target ? FindTagType(target->GetType()) : nullptr;
    if (type && IsOn(type->option))
      ApplyTag(*doc, *static_cast<BaseTag*>(target), one, type->capture, compositing);
  }
  return TRUE;
}

}  // namespace stagemarks
