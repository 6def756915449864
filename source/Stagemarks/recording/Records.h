// The records of single objects, tags and layers, written alike by recording and by the bulk edits.
// A record's own ID is the key it is stored under. RememberedTags spares a recording the reading of
// tags with many values that are as they were. Main thread.
#pragma once

#include <cstddef>
#include <deque>

#include "source/Stagemarks/Host.h"
#include "source/Stagemarks/keys/TagTypes.h"

namespace stagemarks {

// The object's three switches.
void WriteObjectSwitches(BaseContainer& record, const BaseObject& object);
// The link to the object and its switches.
BaseContainer ObjectRecord(const BaseObject& object, LONG index);

// Makes the records of one object after the other, each written over the one before: of most
// objects the switches are those of the object before.
class ObjectRecords {
 public:
  // As ObjectRecord; valid until the next call.
  const BaseContainer& Next(const BaseObject& object, LONG index);

 private:
  BaseContainer record_;
  // As in the record; of none yet
  LONG editorMode_ = NOTOK;
  LONG renderMode_ = NOTOK;
  Bool deformMode_ = FALSE;
};

// The link to the texture tag's material.
void WriteTexture(BaseContainer& settings, const TextureTag& tag);
// The settings of a tag that the capture records. Writing over a record of the same capture leaves
// nothing of the other tag but its link.
void WriteTagSettings(BaseContainer& settings, const BaseTag& tag, Capture capture);

// The fifty parameters of a compositing tag, likewise. False when one of them is a container.
Bool WriteCompositing(BaseContainer& settings, const BaseTag& tag);

// The nine flags of the layer's own data.
void WriteLayerFlags(BaseContainer& record, const BaseList2D& layer, const BaseDocument* doc);
// The link to the layer and its flags.
BaseContainer LayerRecord(const BaseList2D& layer, const BaseDocument* doc, LONG index);

// The last recording of the scene's tags of one capture, in the order of the walk. A tag whose data
// is unchanged since then is recorded again without reading its values, and so is a compositing tag
// whose data is that of the tag before. The copies of data and records share their entries with
// tags and stores.
class RememberedTags {
 public:
  explicit RememberedTags(Capture capture) : capture_(capture) {}

  // Begins a walk over all tags anew.
  void Begin() { next_ = 0; }
  // Puts the record of the walk's next tag, own ID and link to the tag included, into `records`
  // under `index`.
  void Record(const BaseTag& tag, BaseContainer& records, LONG index);
  // Forgets the tags behind the last one of the walk.
  void End() { tags_.resize(next_); }

 private:
  // Whether equal data gives an equal record. Containers are equal whatever their own IDs, which a
  // record keeps; so it does where there are none inside.
  enum class Flat { No, Yes, Unknown };

  struct Remembered {
    BaseContainer data;
    BaseContainer record;
    GeData tag;  // a link
    LONG index = NOTOK;
    Flat isFlat = Flat::No;

    // Whether a tag with that data has this record, but for own ID and link.
    Bool IsSame(const BaseContainer& other);
  };

  Flat Write(BaseContainer& record, const BaseTag& tag, Bool isNew);

  Capture capture_;
  std::deque<Remembered> tags_;
  std::size_t next_ = 0;
};

}  // namespace stagemarks
