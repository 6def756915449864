// Memory taken by a test program of which one source includes CountedOperators.h: counted, and
// failing where a test says so.
#pragma once

#include <atomic>

namespace tests {

// Takings until one fails, once; -1: none does.
inline int takingsLeft = -1;
// Taken and not given back.
inline std::atomic<long> blocksHeld = 0;

}  // namespace tests
