// Applying an element to the active document, and of its parts those that belong to the scene as a
// whole: render settings, camera and layers.
#include "source/Stagemarks/SMDialog.h"
#include "source/Stagemarks/keys/ElementKeys.h"

namespace stagemarks {

namespace {

// The document's bit that the host watches for changed layers.
constexpr LONG kLayersChangedBit = 32;

// Values that the record does not hold, the color above all, stay as they are.
void ApplyLayer(BaseDocument& doc, BaseList2D& layer, const BaseContainer& record) {
  doc.AddUndo(UNDO_CHANGE, &layer);
  LayerData data = layer.GetLayerData(&doc, TRUE);
  for (const LayerFlagRow& row : kLayerFlags) data.*row.flag = record.GetBool(row.key);
  layer.SetLayerData(&doc, data);
  doc.ChangeNBit(kLayersChangedBit, NBIT_TOGGLE);
  doc.Message(MSG_UPDATE);
}

}  // namespace

Bool SMDialog::LoadStagemark(const String& name) {
  StopAllThreads();
  BaseDocument* doc = GetActiveDocument();
  if (!doc) return FALSE;
  doc->StartUndo();
  const LONG element = GetStagemarkID(name);
  recordStore_ = doc->GetDataInstance()->GetContainer(kRecordStore);
  const BaseContainer record = recordStore_.GetContainer(element);
  if (IsOn(Option::RenderSettings)) LoadRenderSettings(record);
  LoadObjectAndTagSettings(record);
  if (IsOn(Option::ActiveCamera)) LoadCameraSettings(record);
  if (IsOn(Option::Layers)) LoadLayerSettings(record);
  MarkCurrent(*doc, element);
  doc->EndUndo();
  EventAdd(1);
  return TRUE;
}

// Never switches to the recorded copy: the first settings take its content, keep their name and
// become active.
Bool SMDialog::LoadRenderSettings(const BaseContainer& record) {
  BaseDocument* doc = GetActiveDocument();
  if (!doc) return FALSE;
  RenderData* first = doc->GetFirstRenderData();
  const String name = first->GetName();
  const BaseContainer render = record.GetContainer(kRender);
  doc->AddUndo(UNDO_CHANGE, first);
  BaseList2D* recorded = render.GetLink(kRenderLink, doc);
  if (!recorded || !recorded->IsInstanceOf(Rbase)) return TRUE;
  recorded->CopyTo(first, 0, nullptr);
  first->SetName(name);
  doc->SetActiveRenderData(doc->GetFirstRenderData());
  return TRUE;
}

Bool SMDialog::LoadCameraSettings(const BaseContainer& record) {
  const BaseDocument* doc = GetActiveDocument();
  if (!doc) return FALSE;
  const BaseContainer camera = record.GetContainer(kCamera);
  if (camera != BaseContainer())
    doc->GetRenderBaseDraw()->SetSceneCamera(camera.GetObjectLink(kCameraLink, doc), FALSE);
  return TRUE;
}

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
