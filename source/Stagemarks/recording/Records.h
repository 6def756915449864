// The records of single objects and layers, written alike by recording and by the bulk edits; tags are captured by
// SMDialog. A record's own ID is the key it is stored under. Main thread.
#pragma once

#include "source/Stagemarks/Host.h"

namespace stagemarks {

// The object's three switches.
void WriteObjectSwitches(BaseContainer& record, const BaseObject& object);
// The link to the object and its switches.
BaseContainer ObjectRecord(const BaseObject& object, LONG index);

// The nine flags of the layer's own data.
void WriteLayerFlags(BaseContainer& record, const BaseList2D& layer, const BaseDocument* doc);
// The link to the layer and its flags.
BaseContainer LayerRecord(const BaseList2D& layer, const BaseDocument* doc, LONG index);

}  // namespace stagemarks
