// DeferredDeletion: ends a document that nobody needs any more in slices, since freeing very many
// objects takes time. It owns the document; what is left goes at once with it. Main thread.
#pragma once

#include "engine/scene/Ownership.h"
#include "program/desktop/background/Slices.h"

namespace desktop {

using engine::OwnedDocument;

class DeferredDeletion {
 public:
  DeferredDeletion();

  // A document that is in no list; null does nothing. One that was given before and still lives
  // ends at once, so that there is never more than one.
  void Take(OwnedDocument doc);

 private:
  bool FreeNext();

  OwnedDocument doc_;
  Slices slices_;
};

}  // namespace desktop
