// Require: what has to hold of every input. A fuzzer keeps an input that ends the program. Any
// thread.
#pragma once

#include <cstdlib>

namespace fuzz {

inline void Require(bool holds) {
  if (!holds) std::abort();
}

}  // namespace fuzz
