#include "program/desktop/view/CameraFlight.h"

#include <algorithm>
#include <cmath>

#include "engine/scene/ElementState.h"
#include "engine/scene/NodeTypes.h"
#include "engine/scene/Vectors.h"
#include "engine/undo/Undo.h"
#include "host/LayerObject.h"
#include "host/Parameters.h"

namespace desktop {

namespace {

// The frame that the camera's own is relative to. O(depth).
host::Matrix Outside(const host::BaseObject& object) {
  return object.GetUp() ? object.GetUp()->GetMg() : host::Matrix();
}

// A layer below a locked one is locked, too.
bool IsLocked(const host::BaseObject& object) {
  const auto* layer =
      engine::AsLayer(engine::FindNode(object.GetDocument(), engine::LayerIdOf(object)));
  while (layer && !engine::OwnLayerData(*layer).locked) layer = layer->GetUp();
  return layer != nullptr;
}

// Numbers that overflowed would put the camera where nobody finds it.
bool IsPlace(const host::Matrix& frame) {
  const host::Vector* const all[] = {&frame.off, &frame.v1, &frame.v2, &frame.v3};
  return std::all_of(std::begin(all), std::end(all), [](const host::Vector* v) {
    return std::isfinite(v->x) && std::isfinite(v->y) && std::isfinite(v->z);
  });
}

}  // namespace

std::string WhyFixed(const host::BaseObject& camera) {
  if (IsLocked(camera)) return "The camera is on a locked layer.";
  if (!engine::FrameInside(Outside(camera), {}))
    return "What the camera hangs below is scaled to nothing.";
  return {};
}

// Nothing else has changed the document since: the move belongs to the step before.
bool CameraFlight::GoesOn(const host::BaseDocument& doc, const host::BaseObject& camera) const {
  return doc_ == IdentityOf(&doc) && camera_ == engine::IdOf(camera) &&
         after_ == engine::ChangeCount(doc);
}

// The copy of the camera is registered with the first move only; the others go on with its step by
// leaving nothing to register.
bool CameraFlight::Move(host::BaseDocument& doc, host::BaseObject& camera,
                        const engine::PictureCamera& view) {
  const auto frame = engine::FrameInside(Outside(camera), view.frame);
  if (!frame || !IsPlace(*frame)) return false;
  const engine::UndoScope scope(doc, "Move Camera");
  // The step of the first move holds the camera as it was before.
  if (!GoesOn(doc, camera)) doc.AddUndo(host::UNDO_CHANGE, &camera);
  camera.SetMl(*frame);
  if (view.isParallel) camera.GetDataInstance()->SetReal(host::CAMERA_WIDTH, view.width);
  doc.SetChanged();
  doc_ = IdentityOf(&doc);
  camera_ = engine::IdOf(camera);
  after_ = engine::ChangeCount(doc);
  host::EventAdd();
  return true;
}

}  // namespace desktop
