// Four: four floats that are reckoned with at once, each exactly as it would be by itself, and four
// directions of them. Values; any thread.
#pragma once

#if defined(__SSE__)
#include <xmmintrin.h>
#endif

#include <cmath>
#include <cstdint>

#include "engine/render/Vec.h"

namespace engine {

using Four = float __attribute__((vector_size(16)));
using FourWhole = std::int32_t __attribute__((vector_size(16)));

inline Four Mix(Four a, Four b, float t) { return a + (b - a) * t; }
// Cuts off the fraction; only for numbers that fit into 32 bits.
inline FourWhole WholeOf(Four x) { return __builtin_convertvector(x, FourWhole); }
inline Four ToFour(FourWhole x) { return __builtin_convertvector(x, Four); }
inline Four Floor(Four x) {
  const Four whole = ToFour(WholeOf(x));
  return whole > x ? whole - 1 : whole;
}
inline Four Root(Four x) {
#if defined(__SSE__)
  return _mm_sqrt_ps(x);
#else
  return Four{std::sqrt(x[0]), std::sqrt(x[1]), std::sqrt(x[2]), std::sqrt(x[3])};
#endif
}

struct FourVecs {
  Four x, y, z;

  Four Dot(Vec v) const { return x * v.x + y * v.y + z * v.z; }
};

}  // namespace engine
