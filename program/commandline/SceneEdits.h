// SceneEdits: the changes that `set` and `demo` make to a scene, each registered for undo in the
// open group. What they make belongs to the document. Main thread.
#pragma once

#include <string>

#include "host/Host.h"

namespace commandline {

// The frame of a thing at `at` that looks along +z at `target`, upright. Lengths in scene units.
host::Matrix LookAt(const host::Vector& at, const host::Vector& target);

// A camera at the top level, at the end; it looks along +z of the frame.
host::BaseObject* MakeCamera(host::BaseDocument& doc, const std::string& name,
                             const host::Matrix& frame);
// The same, placed so that pictures in the size of the active render settings and narrower ones
// show all that has geometry: `turn` radians around the vertical axis, 0 from the front, a little
// above. O(points).
host::BaseObject* MakeFramingCamera(host::BaseDocument& doc, const std::string& name,
                                    double turn = 0.65);
// A material with a plain color (0..1 per channel).
host::BaseMaterial* MakeMaterial(host::BaseDocument& doc, const std::string& name,
                                 const host::Vector& color);
host::LayerObject* MakeLayer(host::BaseDocument& doc, const std::string& name);

// Gives the object's last texture tag that material; makes a tag where there is none.
void AssignMaterial(host::BaseDocument& doc, host::BaseObject& object,
                    host::BaseMaterial* material);
// Null takes the object off its layer.
void AssignLayer(host::BaseDocument& doc, host::BaseObject& object, host::LayerObject* layer);
// One of the nine flags by its name (solo, view, render, ...). False for an unknown one.
bool SetLayerFlag(host::BaseDocument& doc, host::LayerObject& layer, const std::string& flag,
                  bool on);
// Parameters of the active render settings.
void SetRenderSize(host::BaseDocument& doc, host::LONG width, host::LONG height);
void SetRenderFrames(host::BaseDocument& doc, host::LONG from, host::LONG to);

}  // namespace commandline
