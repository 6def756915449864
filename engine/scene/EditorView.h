// EditorView: how a person looks at a document that is open in a window: a host keeps it with the
// document for as long as that is open. A copy of the document takes it along, so that what is
// rendered from the copy without a scene camera shows what stands on the screen; files do not hold
// it. Main thread; a copy made for rendering may be read by the render thread.
#pragma once

#include <optional>

#include "host/BaseDocument.h"

namespace engine {

// Where one looks from, and the lens. Lengths in scene units, angles in radians. A value.
struct PictureCamera {
  host::Matrix frame;  // looks along +z
  bool isParallel = false;
  double fov = 0.9273;     // horizontal
  double fovVertical = 0;  // 0: follows the horizontal one and the picture
  double width = 1000;     // of a parallel camera
  double near = 0;
  double far = 0;  // 0: no limit
};

struct EditorView {
  PictureCamera camera;
  double aspect = 1;  // width over height of what is seen
};

// Setting the view is no change of the document. None: nobody looks at it.
void SetEditorView(host::BaseDocument& doc, const std::optional<EditorView>& view);
const std::optional<EditorView>& EditorViewOf(const host::BaseDocument& doc);

// A number that grows with every call that sets the scene camera, be it to the same one: for views
// that show it then.
host::ULLONG SceneCameraSetCount(const host::BaseDocument& doc);

}  // namespace engine
