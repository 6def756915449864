// OwnedDocument and OwnedNode: what is in no list of documents, and in no place of a scene, belongs
// to one of these and ends with it. Both are moved, never copied, and may hold nothing. What is put
// into a list or a place is given up by release(): that list or scene owns it from then on. Main
// thread, but for a document that no other thread knows.
#pragma once

#include <memory>

#include "host/BaseDocument.h"

namespace engine {

struct FreeDocument {
  void operator()(host::BaseDocument* doc) const { host::BaseDocument::Free(doc); }
};
using OwnedDocument = std::unique_ptr<host::BaseDocument, FreeDocument>;

// Destroys a node that is in no place, whatever its class, with all below it; null does nothing.
// Without recursion.
void DestroyNode(host::BaseList2D* node);

struct FreeDetachedNode {
  void operator()(host::BaseList2D* node) const { DestroyNode(node); }
};
using OwnedNode = std::unique_ptr<host::BaseList2D, FreeDetachedNode>;

}  // namespace engine
