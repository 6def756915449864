#include "program/desktop/background/DeferredDeletion.h"

#include "host/BaseObject.h"

namespace desktop {

DeferredDeletion::DeferredDeletion()
    : slices_("freeing a copy of the scene", [this] { return FreeNext(); }) {}

void DeferredDeletion::Take(OwnedDocument doc) {
  if (!doc) return;
  doc_ = std::move(doc);
  slices_.Start();
}

// One top-level object with all below it a time, the document itself last.
bool DeferredDeletion::FreeNext() {
  host::BaseObject* object = doc_ ? doc_->GetFirstObject() : nullptr;
  if (object) {
    host::BaseObject::Free(object);
  } else {
    doc_.reset();
  }
  return object != nullptr;
}

}  // namespace desktop
