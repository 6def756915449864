// NewObjects: what a person puts into a scene: objects, lights, cameras. Each is one undo step,
// stands at the end of the top level under a name of its own, is selected and owned by the
// document, and the change is posted. Main thread.
#pragma once

#include "engine/scene/EditorView.h"
#include "engine/scene/Nodes.h"

namespace desktop {

// In the origin, with the defaults of its type.
host::BaseObject* AddObject(host::BaseDocument& doc, host::LONG type);
// A light that stands where one looks from and points where one looks.
host::BaseObject* AddLight(host::BaseDocument& doc, const engine::PictureCamera& view);
// A camera that sees the same.
host::BaseObject* AddCamera(host::BaseDocument& doc, const engine::PictureCamera& view);

// Makes a camera of the document the one that is rendered and recorded. One undo step where it is
// not yet.
void MakeSceneCamera(host::BaseDocument& doc, host::BaseObject& camera);

}  // namespace desktop
