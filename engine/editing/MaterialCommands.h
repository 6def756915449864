// Commands on materials: making, deleting and giving them to objects. Each is one undo step and
// posts the change, but for those that say that they are a part of the open undo group. New
// elements belong to the document. Main thread.
#pragma once

#include <string>
#include <vector>

#include "engine/editing/Selection.h"
#include "engine/editing/StepwiseEdit.h"

namespace engine {

// A new one behind all others with a name of its own; it becomes the selected one.
host::BaseMaterial* AddMaterial(host::BaseDocument& doc);
// One of that name with a plain color (0..1 per channel), as a part of the open undo group; nothing
// is posted.
host::BaseMaterial* MakeMaterial(host::BaseDocument& doc, const std::string& name,
                                 const host::Vector& color);
// A copy behind each, with its shaders and a name of its own; the copies become the selected ones.
void DuplicateMaterials(host::BaseDocument& doc, const MaterialList& materials);
// Texture tags with deleted materials show nothing, and get the materials back with undo.
void DeleteMaterials(host::BaseDocument& doc, const MaterialList& materials);
void RenameMaterial(host::BaseDocument& doc, host::BaseMaterial& material,
                    const host::String& name);

// The texture tag whose material the picture shows: the last one that has a material; where none
// has one the last one; null without any.
host::TextureTag* ShownTextureTag(const host::BaseObject& object);
// Gives that tag the material, or none; makes a tag where there is none. A part of the open undo
// group; nothing is posted.
void GiveMaterial(host::BaseDocument& doc, host::BaseObject& object, host::BaseMaterial* material);
// Gives the material to each object as above, as a step of its own.
StepwiseEdit AssignMaterial(host::BaseMaterial& material, std::vector<host::BaseObject*> objects);

// The picture file behind a material's link to a shader: that of the first bitmap at or below the
// shader. Empty where the link leads to no bitmap.
host::Filename TextureFileOf(const host::BaseList2D& material, host::LONG link);
// Puts another file there, registering for undo what it changes: into the bitmap shader that is
// used, or a new one. An empty name takes the link away and leaves the shaders.
void SetTextureFile(host::BaseList2D& material, host::LONG link, const host::Filename& file);

}  // namespace engine
