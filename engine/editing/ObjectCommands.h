// Commands on the objects of a scene: putting new ones in, deleting, duplicating, switching. Each
// is one undo step where it changes anything, and posts the change, but for those that say that
// they are a part of the open undo group; an edit that may change very many elements is a row of
// steps for whoever runs it. New elements belong to the document. Main thread.
#pragma once

#include <string>
#include <vector>

#include "engine/editing/StepwiseEdit.h"
#include "engine/scene/EditorView.h"

namespace engine {

enum class Switch { kEditor, kRender, kGenerator };

// New ones stand at the end of the top level under a name of their own and are selected.
// In the origin, with the defaults of its type.
host::BaseObject* AddObject(host::BaseDocument& doc, host::LONG type);
// A light that stands where one looks from and points where one looks.
host::BaseObject* AddLight(host::BaseDocument& doc, const PictureCamera& view);
// A camera that sees the same.
host::BaseObject* AddCamera(host::BaseDocument& doc, const PictureCamera& view);

// Makes a camera of the document the one that is rendered and recorded. One undo step where it is
// not yet.
void MakeSceneCamera(host::BaseDocument& doc, host::BaseObject& camera);

// The frame of a thing at `at` that looks along +z at `target`, upright. Lengths in scene units.
host::Matrix LookAt(const host::Vector& at, const host::Vector& target);
// A camera of that name at the end of the top level, which looks along +z of the frame, as a part
// of the open undo group; nothing is posted.
host::BaseObject* MakeCamera(host::BaseDocument& doc, const std::string& name,
                             const host::Matrix& frame);

// Deletes the selected objects with all below them, and the selected tags.
StepwiseEdit DeleteSelected(host::BaseDocument& doc);
// Puts a copy of each selected object, with tags and all below it, behind it, under a name of its
// own; selects the copies.
StepwiseEdit DuplicateSelected(host::BaseDocument& doc);

// Sets one switch: a MODE_ number for the first two, 0 or 1 for the generator.
StepwiseEdit SetSwitch(host::BaseDocument& doc, std::vector<host::BaseObject*> objects,
                       Switch which, host::LONG value);
// Sets it as a part of the open undo group, for steps that go on for a while; nothing is posted.
// The name such a step has.
void ChangeSwitch(host::BaseDocument& doc, const std::vector<host::BaseObject*>& objects,
                  Switch which, host::LONG value);
std::string SwitchStep(Switch which);
host::LONG SwitchOf(const host::BaseObject& object, Switch which);

}  // namespace engine
