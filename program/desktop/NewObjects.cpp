#include "program/desktop/NewObjects.h"

#include "engine/scene/Frames.h"
#include "engine/undo/Undo.h"
#include "host/Application.h"
#include "host/Parameters.h"

namespace desktop {

using host::BaseDocument;
using host::BaseObject;

namespace {

BaseObject* Put(BaseDocument& doc, BaseObject* object) {
  const host::String type = engine::TypeName(object->GetType());
  object->SetName(type);
  engine::MakeNameUnique(*object, doc.GetFirstObject());
  {
    const engine::UndoScope scope(doc, "New " + type.ToUtf8());
    doc.AppendObject(object);
    doc.AddUndo(host::UNDO_NEW, object);
  }
  doc.SetActiveTag(nullptr);
  doc.SetActiveObject(object);
  host::EventAdd();
  return object;
}

}  // namespace

BaseObject* AddObject(BaseDocument& doc, host::LONG type) {
  return Put(doc, BaseObject::Alloc(type));
}

BaseObject* AddLight(BaseDocument& doc, const engine::PictureCamera& view) {
  BaseObject* light = BaseObject::Alloc(host::Olight);
  host::Matrix frame = view.frame;
  for (host::Vector* axis : {&frame.v1, &frame.v2, &frame.v3}) *axis = engine::UnitOf(*axis);
  light->SetMl(frame);
  return Put(doc, light);
}

BaseObject* AddCamera(BaseDocument& doc, const engine::PictureCamera& view) {
  BaseObject* camera = BaseObject::Alloc(host::Ocamera);
  camera->SetMl(view.frame);
  host::BaseContainer& data = *camera->GetDataInstance();
  data.SetLong(host::CAMERA_PROJECTION, view.isParallel ? 1 : 0);
  data.SetReal(host::CAMERA_FOV, view.fov);
  data.SetReal(host::CAMERA_FOV_VERTICAL, view.fovVertical);
  data.SetReal(host::CAMERA_WIDTH, view.width);
  data.SetReal(host::CAMERA_NEAR, view.near);
  data.SetReal(host::CAMERA_FAR, view.far);
  return Put(doc, camera);
}

void MakeSceneCamera(BaseDocument& doc, BaseObject& camera) {
  {
    const engine::UndoScope scope(doc, "Scene Camera");
    doc.GetRenderBaseDraw()->SetSceneCamera(&camera, host::FALSE);
  }
  host::EventAdd();
}

}  // namespace desktop
