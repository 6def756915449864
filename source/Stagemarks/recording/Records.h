// The records of single objects, tags and layers, written alike by recording and by the bulk edits.
// A record's own ID is the key it is stored under. Main thread.
#pragma once

#include "source/Stagemarks/keys/TagTypes.h"

namespace stagemarks {

// The object's three switches.
void WriteObjectSwitches(BaseContainer& record, const BaseObject& object);
// The link to the object and its switches. Writing over the record of another object leaves nothing
// of that one.
void WriteObjectRecord(BaseContainer& record, const BaseObject& object, LONG index);
BaseContainer ObjectRecord(const BaseObject& object, LONG index);

// What a capture takes of a tag. Writing over a record of the same capture leaves nothing of the
// other tag but its link.
void WriteTagSettings(BaseContainer& settings, const BaseTag& tag, Capture capture);

// The fifty parameters of a compositing tag, likewise. False when one of them is a container.
Bool WriteCompositing(BaseContainer& settings, const BaseTag& tag);

// The nine flags of the layer's own data.
void WriteLayerFlags(BaseContainer& record, const BaseList2D& layer, const BaseDocument* doc);
// The link to the layer and its flags.
BaseContainer LayerRecord(const BaseList2D& layer, const BaseDocument* doc, LONG index);

}  // namespace stagemarks
