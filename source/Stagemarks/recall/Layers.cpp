#include "source/Stagemarks/SMDialog.h"
#include "source/Stagemarks/keys/ElementKeys.h"
#include "source/Stagemarks/keys/LayerFlags.h"

namespace stagemarks {

namespace {

// The document's bit that the host watches for changed layers.
constexpr LONG kLayersChangedBit = 32;

// What the record does not hold, the color above all, keeps its value.
void ApplyLayer(BaseDocument& doc, BaseList2D& layer, const BaseContainer& record) {
  doc.AddUndo(UNDO_CHANGE, &layer);
  LayerData data = layer.GetLayerData(&doc, TRUE);
  for (const LayerFlagRow& row : kLayerFlags) data.*row.flag = record.GetBool(row.key);
  layer.SetLayerData(&doc, data);
  doc.ChangeNBit(kLayersChangedBit, NBIT_TOGGLE);
  doc.Message(MSG_UPDATE);
}

}  // namespace

// Counts positions but fetches by key, as in loading objects.
Bool SMDialog::LoadLayerSettings(const BaseContainer& record) {
  BaseDocument* doc = GetActiveDocument();
  if (!doc) return FALSE;
  const BaseContainer layers = record.GetContainer(kLayers);
  const LONG count = layers.GetCount();
  for (LONG i = 0; i < count; ++i) {
    const BaseContainer one = layers.GetContainer(i);
    if (BaseList2D* layer = one.GetLink(kLayerLink, doc)) ApplyLayer(*doc, *layer, one);
  }
  return TRUE;
}

}  // namespace stagemarks
