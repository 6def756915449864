// NamesInFile: names that a scene file holds, without reading the scene: only the sections that
// lead to them are read and checked, and in these only what leads to a name is kept. What is
// printed for a key of a shell comes so in no time from a file of any size. One thread.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "engine/core/Result.h"
#include "engine/scenefile/Elements.h"
#include "engine/scenefile/StateNames.h"
#include "host/Types.h"

namespace engine {

// The names of those containers of the store that hold anything, in its order; nothing where the
// store has no such note or is not there. A damaged file fails with a sentence like that of opening
// it, as far as the sections that are read show the damage. Those of kListOfStates come from the
// section that is kept for them, where it is there and belongs to the rest.
Result<std::optional<std::vector<std::string>>> NamesInStore(const std::string& path,
                                                             const NamedStore& store);
// The names of the elements in a section that begin like this, in its order; of one type, 0: of
// all.
Result<std::vector<std::string>> NamesInSection(const std::string& path, ElementSection section,
                                                host::LONG type, std::string_view begin = "");

}  // namespace engine
