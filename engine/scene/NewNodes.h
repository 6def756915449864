// New elements beyond what the published classes make: of any class by its kind, a copy of a whole
// document, and a name that none of an element's neighbors has; JointCopy.h copies several
// elements. New elements are in no place and belong to the caller, who puts them into a scene or
// destroys them. Main thread.
#pragma once

#include "engine/scene/NodeTypes.h"
#include "engine/scene/Ownership.h"

namespace engine {

// A new node of a class with the defaults of its type. An expression tag has its master and root
// already. Null for a document.
host::BaseList2D* MakeNode(NodeKind kind, host::LONG type);

// A copy of a whole document with the same identities, so that links into the original point to the
// counterparts. Undo steps, listener and place in the chain of documents are not copied.
OwnedDocument CopyOf(const host::BaseDocument& doc);

// Gives `node` a name that none of the tree from `first` on has: "Cube" becomes "Cube.1", "Cube.2",
// ... O(n).
void MakeNameUnique(host::BaseList2D& node, const host::BaseList2D* first);

}  // namespace engine
