// DocumentView: what shows a part of the active document. It is told of the document before the
// event loop waits, and finds out by the document's change count whether there is anything to do.
// It keeps the document's identity, never its address. Main thread.
#pragma once

#include "program/desktop/OpenDocument.h"

namespace desktop {

class DocumentView {
 public:
  virtual ~DocumentView() = default;

  // Shows `doc` (null: nothing) and takes up what changed in it since the last call. Cheap when
  // nothing did.
  virtual void Follow(host::BaseDocument* doc) = 0;
};

}  // namespace desktop
