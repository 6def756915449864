// Selection: what is selected in a document, and what a person makes the selection. That is no undo
// step; the change is posted. Main thread.
#pragma once

#include <vector>

#include "host/BaseDocument.h"
#include "host/BaseList2D.h"
#include "host/BaseMaterial.h"
#include "host/BaseObject.h"
#include "host/BaseTag.h"
#include "host/LayerObject.h"

namespace engine {

using MaterialList = std::vector<host::BaseMaterial*>;
using LayerList = std::vector<host::LayerObject*>;

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
// Selects a tag and nothing else; with `add`, flips the tag's selection and leaves all others.
void SelectTag(host::BaseTag& tag, bool add);
// Makes these the selected materials or layers.
void SelectMaterials(host::BaseDocument& doc, const MaterialList& materials);
void SelectLayers(host::BaseDocument& doc, const LayerList& layers);
// Selects the objects that have one of these in a texture tag, or are on one of these layers, and
// no others. O(objects and tags).
void SelectObjectsWith(host::BaseDocument& doc, const MaterialList& materials);
void SelectObjectsOn(host::BaseDocument& doc, const LayerList& layers);

}  // namespace engine
