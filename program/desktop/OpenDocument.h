// Documents by identity: a view keeps the identity, since a document may be closed between two
// looks at it. It is one of this run: a file opened twice makes two documents with the same nodes.
// Main thread.
#pragma once

#include "engine/scene/DocumentState.h"
#include "host/Application.h"
#include "host/BaseDocument.h"

namespace desktop {

// 0 for none.
inline host::ULLONG IdentityOf(const host::BaseDocument* doc) {
  return doc ? engine::NumberOf(*doc) : 0;
}

// The open document of that identity; null when it is closed.
inline host::BaseDocument* FindOpenDocument(host::ULLONG id) {
  host::BaseDocument* doc = id != 0 ? host::GetFirstDocument() : nullptr;
  while (doc && engine::NumberOf(*doc) != id)
    doc = static_cast<host::BaseDocument*>(doc->GetNext());
  return doc;
}

}  // namespace desktop
