// StatesHolding: which Stagemarks hold some elements of the scene, for whoever is about to take
// them away. Main thread.
#pragma once

#include <string>
#include <vector>

#include "host/BaseDocument.h"

namespace engine {

// The names of those that have a record of one of the elements or of anything inside them, tags
// among it, look through one as their camera, or give one as the material of a tag; in the order of
// the list. Cost: what is inside, and for each the records up to the first such; lists that are
// shared are searched once.
std::vector<std::string> StatesHolding(const host::BaseDocument& doc,
                                       const std::vector<host::BaseList2D*>& elements);

}  // namespace engine
