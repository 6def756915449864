// The records of single objects, tags and layers, written alike by recording and by the bulk edits.
// A record's own ID is the key it is stored under. RecordedCompositing spares a recording the
// reading of compositing tags that are as they were. Main thread.
#pragma once

#include <cstddef>
#include <vector>

#include "source/Stagemarks/Host.h"
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

// What was recorded of the scene's compositing tags last, in the order of the walk. A tag whose
// data is what it was then is recorded again without reading its fifty values, and so is one whose
// data is that of the tag before. The copies of data and records share their entries with tags and
// stores.
class RecordedCompositing {
 public:
  // Begins a walk over all tags anew.
  void Begin() { next_ = 0; }
  // The record of the walk's next tag, own ID and link to the tag included; valid until the next
  // call.
  const BaseContainer& RecordOf(const BaseTag& tag, LONG index);
  // Forgets the tags behind the last one of the walk.
  void End() { tags_.resize(next_); }

 private:
  struct Recorded {
    BaseContainer data;
    BaseContainer record;
    GeData tag;  // a link
    LONG index = NOTOK;
    // Whether equal data gives an equal record. Containers are equal whatever their own IDs, which
    // a record keeps.
    Bool isFlat = FALSE;
  };

  std::vector<Recorded> tags_;
  std::size_t next_ = 0;
  BaseContainer data_;  // of the tag before
  BaseContainer work_;  // its record, written over for the next one
  Bool isFlat_ = FALSE;
};

}  // namespace stagemarks
