// Commands on elements that are named instead of selected, of any class: renaming and removing
// them, adding objects, and placing objects. Each is one undo step where it changes anything, and
// posts the change. Main thread.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "engine/core/Result.h"
#include "engine/editing/StepwiseEdit.h"
#include "host/BaseObject.h"

namespace engine {

using Elements = std::vector<host::BaseList2D*>;

// Objects, materials, layers, tags or render settings of one class. One element gets the name as
// it is; several get it with numbers, "Lamp", "Lamp.1", ..., so that no two elements of their class
// have the same. Its steps are those that have another name now. O(elements of that class) for
// several.
StepwiseEdit RenameElements(host::BaseDocument& doc, const Elements& elements,
                            const std::string& name);

// Objects and layers go with all below them, in whatever order they are given. Render settings are
// left alone: see DeleteRenderSettings. Links to what is gone lead nowhere until undo brings it
// back.
StepwiseEdit RemoveElements(host::BaseDocument& doc, const Elements& elements);

// Where an object stands and where it faces, in the coordinates of the scene, whatever it hangs
// below. What is not given stays as it is.
struct Placement {
  std::optional<host::Vector> at;
  std::optional<host::Vector> target;  // faced along +z, upright; instead of angles
  std::optional<host::Vector> angles;  // radians, as AnglesOf of ObjectFrame.h has them
  std::optional<host::Vector> scale;
};

// The frame with that placement; facing keeps its scale.
host::Matrix Placed(const host::Matrix& frame, const Placement& placement);

// Objects that stand there already are no steps. Fails, with the reason for a person, for an
// object in a frame that is flat in a direction: no place in it can be named.
Result<StepwiseEdit> PlaceObjects(host::BaseDocument& doc,
                                  const std::vector<host::BaseObject*>& objects,
                                  const Placement& placement);

// A new object below `parent` (null: at the top level), behind all others there; its frame is that
// of the scene, where the parent's is not flat. Without a name it gets that of its type, made
// unique. Nothing is selected. Belongs to the document.
host::BaseObject* AddObject(host::BaseDocument& doc, host::LONG type, const std::string& name,
                            const host::Matrix& frame, host::BaseObject* parent = nullptr);

}  // namespace engine
