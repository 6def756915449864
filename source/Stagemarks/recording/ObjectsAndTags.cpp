#include "source/Stagemarks/SMDialog.h"
#include "source/Stagemarks/keys/ElementKeys.h"
#include "source/Stagemarks/recording/Records.h"
#include "source/Stagemarks/recording/Walk.h"

namespace stagemarks {

// Starts the indices anew but empties nothing: entries of an earlier, larger recording stay behind the new ones.
Bool SMDialog::RecordObjectAndTagSettings() {
  BaseDocument* doc = GetActiveDocument();
  if (!doc) return FALSE;
  objectCount_ = tagCount_ = 0;
  LoopThroughOM(doc, doc->GetFirstObject());
  return TRUE;
}

void SMDialog::LoopThroughOM(BaseDocument*, BaseObject* op) {
  const BaseObject* above = op ? op->GetUp() : nullptr;
  const Bool objects = IsOn(Option::Objects);
  BaseContainer record;
  for (; op; op = NextInOrder(op, above)) {
    if (objects) {
      WriteObjectRecord(record, *op, objectCount_);
      objectsBc_.SetContainer(objectCount_, record);
    }
    if (op->GetFirstTag()) RecordTags(op);
    ++objectCount_;
  }
}

Bool SMDialog::RecordTags(BaseObject* op) {
  for (BaseTag* tag = op->GetFirstTag(); tag; tag = tag->GetNext()) {
    const TagTypeRow* type = FindTagType(tag->GetType());
    if (!type || !IsOn(type->option)) continue;
    BaseContainer& record = tagRecords_[static_cast<std::size_t>(type->capture)];
    WriteTagSettings(record, *tag, type->capture);
    record.SetId(tagCount_);
    record.SetLink(kTagLink, tag);
    tagsBc_.SetContainer(tagCount_, record);
    ++tagCount_;
  }
  return TRUE;
}

}  // namespace stagemarks
