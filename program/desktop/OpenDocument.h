// Documents by identity: a view keeps the identity, since a document may be closed between two looks at it. Main thread.
#pragma once

#include "engine/scene/Nodes.h"
#include "host/Application.h"
#include "host/BaseDocument.h"

namespace desktop {

// 0 for none.
inline engine::NodeId IdentityOf(const host::BaseDocument* doc) { return doc ? engine::IdOf(*doc) : 0; }

// The open document of that identity; null when it is closed.
inline host::BaseDocument* FindOpenDocument(engine::NodeId id) {
  host::BaseDocument* doc = id != 0 ? host::GetFirstDocument() : nullptr;
  while (doc && engine::IdOf(*doc) != id) doc = static_cast<host::BaseDocument*>(doc->GetNext());
  return doc;
}

}  // namespace desktop
