// Applying an element to the active document, and of its parts the render settings and the camera.
#include "source/Stagemarks/SMDialog.h"
#include "source/Stagemarks/keys/ElementKeys.h"

namespace stagemarks {

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

}  // namespace stagemarks
