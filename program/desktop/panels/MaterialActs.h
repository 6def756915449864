// What a person does to materials, each as one undo step of the document. Main thread.
#pragma once

#include <vector>

#include "program/desktop/OpenDocument.h"

namespace desktop {

using MaterialList = std::vector<host::BaseMaterial*>;

// A new one behind all others with a name of its own; it becomes the selected one. Owned by the
// document.
host::BaseMaterial* AddMaterial(host::BaseDocument& doc);
// A copy behind each, with its shaders and a name of its own; the copies become the selected ones.
void DuplicateMaterials(host::BaseDocument& doc, const MaterialList& materials);
// Texture tags that have them show nothing then, and get them back with undo.
void DeleteMaterials(host::BaseDocument& doc, const MaterialList& materials);
void RenameMaterial(host::BaseDocument& doc, host::BaseMaterial& material,
                    const host::String& name);
// Makes these the selected materials. No undo step, as for any selection.
void SelectMaterials(host::BaseDocument& doc, const MaterialList& materials);
// Selects the objects that have one of these in a texture tag, and no others. O(objects and tags).
void SelectObjectsWith(host::BaseDocument& doc, const MaterialList& materials);

}  // namespace desktop
