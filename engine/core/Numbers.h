// Whole numbers from real ones without undefined behavior. Pure functions, any thread.
#pragma once

#include <cmath>
#include <limits>

#include "host/Types.h"

namespace engine {

// The number without its fraction; NaN is 0, what lies outside of LONG is the nearer end.
inline host::LONG TruncatedLong(host::Real value) {
  if (std::isnan(value)) return 0;
  if (value <= std::numeric_limits<host::LONG>::min())
    return std::numeric_limits<host::LONG>::min();
  if (value >= std::numeric_limits<host::LONG>::max())
    return std::numeric_limits<host::LONG>::max();
  return static_cast<host::LONG>(value);
}

}  // namespace engine
