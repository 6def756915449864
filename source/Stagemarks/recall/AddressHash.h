// Where to begin looking for a scene item in a table of a power of two places.
#pragma once

#include <cstddef>
#include <cstdint>

namespace stagemarks {

// A place below `size`, spread by Fibonacci hashing: addresses of a pool differ in their middle bits only.
inline std::size_t HashAddress(const void* address, std::size_t size) {
  constexpr std::uint64_t kGoldenRatio = 0x9E3779B97F4A7C15;
  return static_cast<std::size_t>((reinterpret_cast<std::uintptr_t>(address) * kGoldenRatio) >> 32) & (size - 1);
}

}  // namespace stagemarks
