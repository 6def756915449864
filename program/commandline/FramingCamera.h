// A camera that shows everything, for scenes that have none worth rendering. Main thread.
#pragma once

#include <string>

#include "engine/scene/EditorView.h"
#include "host/Host.h"

namespace commandline {

// The view of the camera that MakeFramingCamera makes; nothing is made.
engine::PictureCamera FramingView(const host::BaseDocument& doc, double turn = 0.65);

// Adds the camera at the end of the top level, as a part of the open undo group; it belongs to the
// document. It is placed so that pictures in the size of the active render settings and narrower
// ones show all that has geometry: `turn` radians around the vertical axis, 0 from the front, a
// little above. O(points).
host::BaseObject* MakeFramingCamera(host::BaseDocument& doc, const std::string& name,
                                    double turn = 0.65);

}  // namespace commandline
