// A container as one line of text, for comparing whole stores in tests: own IDs other than 0 as
// "#7", links as the name of what they resolve to. Main thread.
#pragma once

#include <string>

#include "host/BaseContainer.h"

namespace tests {

// "#2{20000 "A", 25004 {70000 ->Camera}}". A link resolves against `doc`: "->nothing" for a null
// link, "->gone" for one whose target does not live there.
std::string ContainerText(const host::BaseContainer& container, const host::BaseDocument* doc);

// One line per entry of the outer container, "key value".
std::string ContainerLines(const host::BaseContainer& container, const host::BaseDocument* doc);

}  // namespace tests
