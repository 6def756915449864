#include "source/Stagemarks/recording/Records.h"

#include "source/Stagemarks/SMDialog.h"
#include "source/Stagemarks/keys/ElementKeys.h"
#include "source/Stagemarks/keys/TagTypes.h"

namespace stagemarks {

namespace {

void WriteTexture(BaseContainer& settings, const TextureTag& tag) {
  settings.SetLink(kMaterialLink, tag.GetMaterial(FALSE));
}

BaseContainer Captured(const BaseTag& tag, Capture capture) {
  BaseContainer settings;
  WriteTagSettings(settings, tag, capture);
  return settings;
}

}  // namespace

void WriteObjectSwitches(BaseContainer& record, const BaseObject& object) {
  record.SetLong(kEditorMode, object.GetEditorMode());
  record.SetLong(kRenderMode, object.GetRenderMode());
  record.SetLong(kDeformMode, object.GetDeformMode() ? 1 : 0);
}

void WriteObjectRecord(BaseContainer& record, const BaseObject& object, LONG index) {
  record.SetId(index);
  record.SetLink(kObjectLink, &object);
  WriteObjectSwitches(record, object);
}

BaseContainer ObjectRecord(const BaseObject& object, LONG index) {
  BaseContainer record;
  WriteObjectRecord(record, object, index);
  return record;
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
  return Captured(*tag, capture);
}
BaseContainer SMDialog::GetTtextureSettings(BaseTag* tag) const {
  return Captured(*tag, Capture::Texture);
}
BaseContainer SMDialog::GetTgenericSettings(BaseTag* tag) const {
  return Captured(*tag, Capture::Generic);
}
BaseContainer SMDialog::GetTcompositingSettings(BaseTag* tag) const {
  return Captured(*tag, Capture::Compositing);
}

const BaseContainer& RecordedCompositing::RecordOf(const BaseTag& tag, LONG index) {
  if (next_ == tags_.size()) tags_.emplace_back();
  Recorded& last = tags_[next_++];
  const BaseContainer& data = *tag.GetDataInstance();
  const GeData link(&tag);
  const Bool isSame = last.isFlat && last.data == data;
  if (isSame && last.index == index && last.tag == link) return last.record;
  if (isSame) {
    work_ = last.record;
    isFlat_ = TRUE;
  } else if (!isFlat_ || data_ != data) {
    isFlat_ = WriteCompositing(work_, tag);
  }
  data_ = data;
  work_.SetId(index);
  work_.SetLink(kTagLink, &tag);
  // A record that comes out alike goes on sharing its entries with the stores.
  if (!isFlat_ || last.record.GetId() != index || last.record != work_) last.record = work_;
  last.tag = link;
  last.index = index;
  last.isFlat = isFlat_;
  last.data = data;
  return last.record;
}

}  // namespace stagemarks
