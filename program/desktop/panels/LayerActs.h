// What a person does to layers, each as one undo step of the document. Layers that are not of the
// document are left alone. Main thread.
#pragma once

#include <vector>

#include "engine/editing/StepwiseEdit.h"
#include "program/desktop/OpenDocument.h"

namespace desktop {

using LayerList = std::vector<host::LayerObject*>;

// A new one below all others, with a name and, by turns, a color of its own. Owned by the
// document.
host::LayerObject* AddLayer(host::BaseDocument& doc);
// With the layers below them.
void DeleteLayers(host::BaseDocument& doc, const LayerList& layers);
void RenameLayer(host::BaseDocument& doc, host::LayerObject& layer, const host::String& name);
void SetLayerColor(host::BaseDocument& doc, const LayerList& layers, const host::Vector& color);
void SetLayerSwitch(host::BaseDocument& doc, const LayerList& layers, std::size_t number, bool on);
// Puts objects on a layer; null takes them off theirs.
engine::StepwiseEdit AssignLayer(host::BaseDocument& doc, std::vector<host::BaseObject*> objects,
                                 host::LayerObject* layer);
// Selects the objects on these layers and no others. No undo step, as for any selection.
void SelectObjectsOn(host::BaseDocument& doc, const LayerList& layers);
// Makes these the selected layers.
void SelectLayers(host::BaseDocument& doc, const LayerList& layers);

}  // namespace desktop
