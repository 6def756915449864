// ElementRows: what lists of what states say show of an element, and what a click on one does to
// the scene. Main thread.
#pragma once

#include <QIcon>

#include "engine/editing/InspectedElements.h"
#include "engine/states/RecordedParts.h"
#include "host/BaseDocument.h"

namespace desktop {

// Icon of the kind of element, or of its part where the element is gone or none.
QIcon ElementIcon(const host::BaseDocument& doc, engine::Part part, engine::NodeId element);

// Selects the object, the object that the tag is on, or the layer, and has the attributes show the
// element itself, render settings too. Nothing for an element that is gone.
void SelectInScene(host::BaseDocument& doc, engine::InspectedElements& inspected,
                   engine::NodeId element);

}  // namespace desktop
