// Counterparts: which element of one document is which element of another, for two scenes that are
// versions of one another: the one of the same identity, type and name, else the one at the same
// path. Both documents outlive it unchanged. Main thread.
#pragma once

#include <optional>

#include "engine/states/ElementPlaces.h"
#include "host/BaseDocument.h"

namespace engine {

class Counterparts {
 public:
  Counterparts(const host::BaseDocument& from, const host::BaseDocument& to)
      : from_(from), to_(to) {}

  // The element of `to` for one of `from`, 0 where there is none. The first one that is not found
  // by its identity costs a walk over both documents.
  NodeId Find(NodeId element);
  // Whether two links say the same: both lead nowhere, or one to the other's counterpart.
  bool AreSame(NodeId from, NodeId to) { return from == 0 ? to == 0 : to != 0 && Find(from) == to; }

 private:
  const host::BaseDocument& from_;
  const host::BaseDocument& to_;
  // Made once something is not found by its identity.
  std::optional<ElementPlaces> here_;
  std::optional<ElementPlaces> there_;
};

}  // namespace engine
