// Copying nodes: contents, what an element owns, whole trees. Data, names, frames and meshes are
// shared with the source. Nothing here recurses over nodes. Main thread.
#pragma once

#include <unordered_map>

#include "engine/core/ContainerContents.h"
#include "engine/scene/NodeAccess.h"
#include "engine/scene/Ownership.h"

namespace engine {

// Old identities and the new ones of their copies.
using IdMap = std::unordered_map<NodeId, NodeId>;

struct CopyRules {
  bool keepIds = false;
  bool withBits = true;
  IdMap* ids = nullptr;  // filled with the new identities unless they are kept
};

// Name, data, modes, layer, material, flags, shape and, unless left out, bits.
void CopyContents(const host::BaseList2D& source, host::BaseList2D& target, bool withBits);
// A copy with all below it, in no place, owned by the caller. Not for documents.
host::BaseList2D* CopyTree(const host::BaseList2D& root, const CopyRules& rules);
// Copies of one list of `source` at the end of the same list of `target`.
void CopyList(const host::BaseList2D& source, host::BaseList2D& target, int slot,
              const CopyRules& rules);
// The whole document; its identities are kept or new.
OwnedDocument CopyDocument(const host::BaseDocument& source, bool keepIds);

// Turns links that point to a key of `ids` towards its value: layers, materials and links in the
// data of `root` and of all below it.
void FollowLinks(host::BaseList2D& root, const IdMap& ids);

}  // namespace engine
