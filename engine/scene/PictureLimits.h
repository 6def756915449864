// How large pictures may be: render settings ask for no more, and image files with more are refused
// before memory is taken. Any thread.
#pragma once

#include <cstdint>

namespace engine {

inline constexpr std::uint32_t kLargestImageSide = 16384;  // pixels

}  // namespace engine
