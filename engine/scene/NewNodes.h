// New elements beyond what the published classes make: of any class by its kind, copies of several
// with the links between them, and a name that none of their neighbors has. What is returned is in
// no place and belongs to the caller (OwnedNode), who puts it into a scene or destroys it. Main
// thread.
#pragma once

#include <vector>

#include "engine/core/Progress.h"
#include "engine/scene/NodeTypes.h"
#include "engine/scene/Ownership.h"

namespace engine {

// A new node of a class with the defaults of its type. An expression tag has its master and root
// already. Null for a document.
host::BaseList2D* MakeNode(NodeKind kind, host::LONG type);

// Copies of several elements with all below each, in the same order. Links from one to another
// follow the copies. None when `progress` stopped it.
std::vector<host::BaseList2D*> CopyTogether(const std::vector<host::BaseList2D*>& roots,
                                            const ProgressCallback& progress = {});
// A copy of a whole document with the same identities, so that links into the original point to the
// counterparts. Undo steps, listener and place in the chain of documents are not copied.
OwnedDocument CopyOf(const host::BaseDocument& doc);

// Gives `node` a name that none of the tree from `first` on has: "Cube" becomes "Cube.1", "Cube.2",
// ... O(n).
void MakeNameUnique(host::BaseList2D& node, const host::BaseList2D* first);

}  // namespace engine
