// Making and ending nodes of every class. A new node has an identity, the type's default parameters
// and, where the type is known, its name; it is in no place and belongs to the caller. Main thread.
#pragma once

#include "engine/scene/NodeAccess.h"
#include "engine/scene/NodeTypes.h"

namespace engine {

// A node of a class with nothing in it but a new identity. Not for documents.
host::BaseList2D* MakeBare(NodeKind kind, host::LONG type);
// A document without render settings, which its maker has to add.
host::BaseDocument* MakeBareDocument();
// The class that a tag of `type` is made as.
NodeKind TagKind(host::LONG type);

// For the published Free functions: lets an undo step claim the node, else takes it out and
// destroys it. Null is allowed.
void FreeNode(host::BaseList2D* node);
// Destroys everything in one list of `owner`, without taking out and registering: for lists of
// detached owners.
void DestroyList(host::GeListNode* first);

bool IsKnownType(host::LONG type);
// Parameters that an element of this type starts with; shared by all of them.
host::BaseContainer DefaultData(host::LONG type);

}  // namespace engine
