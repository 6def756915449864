// SceneCommands: what a person does to a scene besides recording it: selecting, deleting,
// duplicating, switching, giving materials. Tree, menus and viewport share them. What may change
// very many elements is a row of steps for whoever runs it: one undo step where it changes
// anything, which posts the change. They know no toolkit and own nothing. Main thread.
#pragma once

#include <string>
#include <vector>

#include "engine/editing/StepwiseEdit.h"
#include "engine/scene/Nodes.h"

namespace desktop {

enum class Switch { kEditor, kRender, kGenerator };

// The selected objects in the order of the tree; and those of them that are below no other selected
// one. O(objects).
std::vector<host::BaseObject*> SelectedObjects(const host::BaseDocument& doc);
std::vector<host::BaseObject*> TopmostSelected(const host::BaseDocument& doc);
// Those of `nodes`, none of them null, that are below no other of them, in the order given. Linear.
std::vector<host::BaseList2D*> Topmost(const std::vector<host::BaseList2D*>& nodes);

// Selects all objects, those in closed branches too; and no object and no tag.
void SelectAll(host::BaseDocument& doc);
void SelectNone(host::BaseDocument& doc);
// Selects these objects and nothing else; the last one becomes the active one.
void SelectOnly(host::BaseDocument& doc, const std::vector<host::BaseObject*>& objects);
// Selects a tag; unless `add`, and nothing else.
void SelectTag(host::BaseTag& tag, bool add);

// Deletes the selected objects with all below them, and the selected tags.
engine::StepwiseEdit DeleteSelected(host::BaseDocument& doc);
// Puts a copy of each selected object, with tags and all below it, behind it, under a name of its
// own; selects the copies.
engine::StepwiseEdit DuplicateSelected(host::BaseDocument& doc);
// Links the first texture tag of each object to the material, or makes one.
engine::StepwiseEdit AssignMaterial(host::BaseMaterial& material,
                                    std::vector<host::BaseObject*> objects);
// Sets one switch: a MODE_ number for the first two, 0 or 1 for the generator.
engine::StepwiseEdit SetSwitch(host::BaseDocument& doc, std::vector<host::BaseObject*> objects,
                               Switch which, host::LONG value);
// The same as a part of the open undo group, for steps that go on for a while; nothing is posted.
// The name such a step has.
void ChangeSwitch(host::BaseDocument& doc, const std::vector<host::BaseObject*>& objects,
                  Switch which, host::LONG value);
std::string SwitchStep(Switch which);
host::LONG SwitchOf(const host::BaseObject& object, Switch which);

}  // namespace desktop
