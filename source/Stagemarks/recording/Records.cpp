#include "source/Stagemarks/recording/Records.h"

#include "source/Stagemarks/SMDialog.h"
#include "source/Stagemarks/keys/ElementKeys.h"
#include "source/Stagemarks/keys/TagTypes.h"

namespace stagemarks {

namespace {

BaseContainer CapturedFrom(const BaseTag& tag, Capture capture) {
  BaseContainer settings;
  WriteTagSettings(settings, tag, capture);
  return settings;
}

Bool HoldsContainers(const BaseContainer& data) {
  const LONG count = data.GetCount();
  for (LONG i = 0; i < count; ++i) {
    if (data.GetType(data.GetIndexId(i)) == DA_CONTAINER) return TRUE;
  }
  return FALSE;
}

}  // namespace

void WriteObjectSwitches(BaseContainer& record, const BaseObject& object) {
  record.SetLong(kEditorMode, object.GetEditorMode());
  record.SetLong(kRenderMode, object.GetRenderMode());
  record.SetLong(kDeformMode, object.GetDeformMode() ? 1 : 0);
}

BaseContainer ObjectRecord(const BaseObject& object, LONG index) {
  return ObjectRecords().Next(object, index);
}

const BaseContainer& ObjectRecords::Next(const BaseObject& object, LONG index) {
  record_.SetId(index);
  record_.SetLink(kObjectLink, &object);
  const LONG editorMode = object.GetEditorMode();
  const LONG renderMode = object.GetRenderMode();
  const Bool deformMode = object.GetDeformMode();
  if (editorMode == editorMode_ && renderMode == renderMode_ && deformMode == deformMode_)
    return record_;
  WriteObjectSwitches(record_, object);
  editorMode_ = editorMode;
  renderMode_ = renderMode;
  deformMode_ = deformMode;
  return record_;
}

void WriteLayerFlags(BaseContainer& record, const BaseList2D& layer, const BaseDocument* doc) {
  const LayerData data = layer.GetLayerData(doc, TRUE);
  for (const LayerFlagRow& row : kLayerFlags) record.SetBool(row.key, data.*row.flag);
}

BaseContainer LayerRecord(const BaseList2D& layer, const BaseDocument* doc, LONG index) {
  BaseContainer record(index);
  record.SetLink(kLayerLink, &layer);
  WriteLayerFlags(record, layer, doc);
  return record;
}

void WriteTexture(BaseContainer& settings, const TextureTag& tag) {
  settings.SetLink(kMaterialLink, tag.GetMaterial(FALSE));
}

// One value serves all reads through the parameter interface: a parameter that the tag lacks
// repeats the one before.
Bool WriteCompositing(BaseContainer& settings, const BaseTag& tag) {
  const BaseContainer& data = *tag.GetDataInstance();
  GeData parameter;
  Bool isFlat = TRUE;
  for (const CompositingRow& row : kCompositing) {
    switch (row.reading) {
      case Reading::Bool:
        settings.SetBool(row.key, data.GetBool(row.parameter));
        break;
      case Reading::Long:
        settings.SetLong(row.key, data.GetLong(row.parameter));
        break;
      case Reading::Real:
        settings.SetReal(row.key, data.GetReal(row.parameter));
        break;
      case Reading::Parameter:
        tag.GetParameter(DescID(row.parameter), parameter, 0);
        settings.SetData(row.key, parameter);
        isFlat = isFlat && parameter.GetType() != DA_CONTAINER;
        break;
    }
  }
  return isFlat;
}

void WriteTagSettings(BaseContainer& settings, const BaseTag& tag, Capture capture) {
  switch (capture) {
    case Capture::Texture:
      WriteTexture(settings, static_cast<const TextureTag&>(tag));
      break;
    case Capture::Compositing:
      WriteCompositing(settings, tag);
      break;
    case Capture::Generic:
      settings = tag.GetData();
      break;
  }
}

BaseContainer SMDialog::CaptureTag(BaseTag* tag, Capture capture) const {
  return CapturedFrom(*tag, capture);
}
BaseContainer SMDialog::GetTtextureSettings(BaseTag* tag) const {
  return CapturedFrom(*tag, Capture::Texture);
}
BaseContainer SMDialog::GetTgenericSettings(BaseTag* tag) const {
  return CapturedFrom(*tag, Capture::Generic);
}
BaseContainer SMDialog::GetTcompositingSettings(BaseTag* tag) const {
  return CapturedFrom(*tag, Capture::Compositing);
}

Bool RememberedTags::Remembered::IsSame(const BaseContainer& other) {
  if (isFlat == Flat::No || data != other) return FALSE;
  if (isFlat == Flat::Unknown) isFlat = HoldsContainers(data) ? Flat::No : Flat::Yes;
  return isFlat == Flat::Yes;
}

// A new record of fifty values is written over that of the tag before. Whether there are containers
// in a whole data container is asked once it is met again.
RememberedTags::Flat RememberedTags::Write(BaseContainer& record, const BaseTag& tag, Bool isNew) {
  if (capture_ != Capture::Compositing) {
    WriteTagSettings(record, tag, capture_);
    return Flat::Unknown;
  }
  Remembered* before = next_ > 1 ? &tags_[next_ - 2] : nullptr;
  const Bool isLikeBefore = before && before->IsSame(*tag.GetDataInstance());
  if (isLikeBefore || (isNew && before)) record = before->record;
  return isLikeBefore || WriteCompositing(record, tag) ? Flat::Yes : Flat::No;
}

void RememberedTags::Record(const BaseTag& tag, BaseContainer& records, LONG index) {
  if (next_ == tags_.size()) tags_.emplace_back();
  Remembered& last = tags_[next_++];
  const BaseContainer& data = *tag.GetDataInstance();
  const GeData link(&tag);
  const Bool isSame = last.IsSame(data);
  if (isSame && last.index == index && last.tag == link)
    return records.SetContainer(index, last.record);
  last.isFlat = Flat::No;  // until all is written, which may fail for want of memory
  const Flat isFlat = isSame ? Flat::Yes : Write(last.record, tag, last.index == NOTOK);
  last.record.SetId(index);
  last.record.SetLink(kTagLink, &tag);
  const LONG count = records.GetCount();
  records.SetContainer(index, last.record);
  // One that came out alike goes on sharing its entries with the stores.
  if (records.GetCount() == count) last.record = records.GetContainer(index);
  last.data = data;
  last.tag = link;
  last.index = index;
  last.isFlat = isFlat;
}

}  // namespace stagemarks
