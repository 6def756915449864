// StagemarksNode: the scene hook that takes the previews along: just before a document is saved to
// another file, it copies the folder beside the old file to the matching place beside the new one.
// It stores nothing; the host owns the instances, one per document. Main thread.
#pragma once

#include "source/Stagemarks/Host.h"

namespace stagemarks {

class StagemarksNode : public SceneHookData {
 public:
  // A new instance for the host; null when out of memory.
  static SceneHookData* Alloc();
  // Always true: the message goes on, and no failure here stops the save.
  Bool Message(GeListNode* node, LONG type, void* data) override;

 private:
  // Copies the plain files at the top level, replacing files of the same name; asks first when `to`
  // is there already. False when the user declines and at the first failure; what was copied so far
  // stays.
  Bool CopySMFolder(const Filename& from, const Filename& to) const;
  static Filename StringToFilename(const String& path) { return Filename(path); }
};

// Registers the hook; false when the host refuses.
Bool RegisterStagemarksNode();

}  // namespace stagemarks
