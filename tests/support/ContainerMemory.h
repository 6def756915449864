// How much memory a container holds. Any thread that owns it.
#pragma once

#include <cstddef>

#include "host/BaseContainer.h"

namespace tests {

// Bytes held by the container and all it reaches; what is shared inside it counts once.
std::size_t MemoryOf(const host::BaseContainer& container);

}  // namespace tests
