#include "source/Stagemarks/recording/Records.h"

#include "source/Stagemarks/keys/ElementKeys.h"
#include "source/Stagemarks/keys/LayerFlags.h"

namespace stagemarks {

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

}  // namespace stagemarks
