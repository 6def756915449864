// Additions: what scripts put into a document, place and take out; each an undo step. Every
// function throws a Failure where it cannot. The thread of the session.
#pragma once

#include "program/python/Elements.h"

namespace scripting {

// Where an object stands, in the coordinates of the scene; empty members change nothing. Three
// numbers each, angles in degrees; an object that looks at a point does so along +z, upright.
struct Where {
  std::vector<double> at = {};
  std::vector<double> lookAt = {};
  std::vector<double> rotation = {};
  std::vector<double> scale = {};
};
// Adds an object below `parent`, 0: at the top. `type` as the host calls it, in any case: "cube".
// Without a name it gets that of its type.
Found AddObjectOf(DocumentId document, const std::string& type, const std::string& name,
                  ElementId parent, const Where& where);
void Place(DocumentId document, const std::vector<ElementId>& objects, const Where& where);
// `color`: red, green and blue from 0 to 1; empty for a light gray.
Found AddMaterialOf(DocumentId document, const std::string& name, const std::vector<double>& color);
Found AddLayerOf(DocumentId document, const std::string& name);
Found AddSettingsOf(DocumentId document, const std::string& name);
// Removes elements with all below them. Render settings only among themselves; the last ones stay.
void Remove(DocumentId document, const std::vector<ElementId>& elements);
// The texture tag of each object gets the material, 0: none.
void GiveMaterialTo(DocumentId document, const std::vector<ElementId>& objects, ElementId material);

}  // namespace scripting
