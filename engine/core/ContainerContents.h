// ContainerContents: what the engine, not the plug-in, may see of values and containers: link
// identities, walking entries without copying them, and whether two containers share one body. Any
// thread that owns the container.
#pragma once

#include <functional>

#include "host/BaseContainer.h"

namespace engine {

// Identity of an element; 0 is none. No other element ever gets the same one.
using NodeId = host::ULLONG;

// The link in a value, 0 where it is no link or a null link; and a value holding a link to that
// identity.
NodeId LinkOf(const host::GeData& value);
host::GeData LinkValue(NodeId target);

// The link under `id` of a container, 0 where there is none.
NodeId LinkOf(const host::BaseContainer& container, host::LONG id);
void SetLinkId(host::BaseContainer& container, host::LONG id, NodeId target);

// Address of the shared entries: equal for copies that split from nothing yet, null for a container
// without entries and ID. Valid as an identity while the container lives unchanged.
const void* BodyOf(const host::BaseContainer& container);

// Calls `visit(key, value)` for every entry in order. O(n); sub-containers are shared, not copied.
void ForEachEntry(const host::BaseContainer& container,
                  const std::function<void(host::LONG, const host::GeData&)>& visit);

// Equal in everything, own IDs included, at every depth.
bool Identical(const host::BaseContainer& a, const host::BaseContainer& b);

}  // namespace engine
