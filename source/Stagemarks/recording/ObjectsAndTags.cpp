#include "source/Stagemarks/SMDialog.h"
#include "source/Stagemarks/keys/ElementKeys.h"
#include "source/Stagemarks/recording/Records.h"
#include "source/Stagemarks/recording/Walk.h"

namespace stagemarks {

namespace {

// Keys 0, 1, 2 ... in this order, as a recording writes them.
Bool IsNumbered(const BaseContainer& records) {
  const LONG count = records.GetCount();
  for (LONG i = 0; i < count; ++i) {
    if (records.GetIndexId(i) != i) return FALSE;
  }
  return TRUE;
}

BaseContainer FirstRecords(const BaseContainer& records, LONG count) {
  BaseContainer first;
  for (LONG i = 0; i < count; ++i) first.SetContainer(i, records.GetContainer(i));
  return first;
}

// An empty work container borrows the records of an element while it is filled: those that come out
// alike are then shared with that element and take no memory. What is left of the borrowed ones at
// the end goes again.
class BorrowedRecords {
 public:
  BorrowedRecords(BaseContainer& work, const BaseContainer& records) : work_(work) {
    if (work.GetCount() > 0 || !IsNumbered(records)) return;
    work = records;
    borrowed_ = TRUE;
  }
  void GiveBackFrom(LONG count) {
    if (borrowed_ && work_.GetCount() > count) work_ = FirstRecords(work_, count);
  }

 private:
  BaseContainer& work_;
  Bool borrowed_ = FALSE;
};

}  // namespace

// Starts the indices anew but empties nothing: entries of an earlier, larger recording stay behind
// the new ones.
Bool SMDialog::RecordObjectAndTagSettings() {
  BaseDocument* doc = GetActiveDocument();
  if (!doc) return FALSE;
  objectCount_ = tagCount_ = 0;
  const BaseContainer current = CurrentRecord();
  BorrowedRecords objects(objectsBc_, current.GetContainer(kObjects));
  BorrowedRecords tags(tagsBc_, current.GetContainer(kTags));
  compositingTags_.Begin();
  genericTags_.Begin();
  LoopThroughOM(doc, doc->GetFirstObject());
  compositingTags_.End();
  genericTags_.End();
  objects.GiveBackFrom(IsOn(Option::Objects) ? objectCount_ : 0);
  tags.GiveBackFrom(tagCount_);
  return TRUE;
}

void SMDialog::LoopThroughOM(BaseDocument*, BaseObject* op) {
  const BaseObject* above = op ? op->GetUp() : nullptr;
  const Bool objects = IsOn(Option::Objects);
  ObjectRecords records;
  for (; op; op = NextInOrder(op, above)) {
    if (objects) objectsBc_.SetContainer(objectCount_, records.Next(*op, objectCount_));
    if (op->GetFirstTag()) RecordTags(op);
    ++objectCount_;
  }
}

Bool SMDialog::RecordTags(BaseObject* op) {
  for (BaseTag* tag = op->GetFirstTag(); tag; tag = tag->GetNext()) {
    const TagTypeRow* type = FindTagType(tag->GetType());
    if (!type || !IsOn(type->option)) continue;
    if (type->capture == Capture::Texture) {
      textureRecord_.SetId(tagCount_);
      WriteTexture(textureRecord_, static_cast<const TextureTag&>(*tag));
      textureRecord_.SetLink(kTagLink, tag);
      tagsBc_.SetContainer(tagCount_, textureRecord_);
    } else {
      RememberedTags& recorded =
          type->capture == Capture::Compositing ? compositingTags_ : genericTags_;
      recorded.Record(*tag, tagsBc_, tagCount_);
    }
    ++tagCount_;
  }
  return TRUE;
}

}  // namespace stagemarks
