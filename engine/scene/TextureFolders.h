// The folders beside a scene in which its textures usually lie, in the order of looking. The first
// one is the one that is written.
#pragma once

#include <array>

namespace engine {

inline constexpr std::array<const char*, 4> kTextureFolders = {"tex", "textures", "images", "maps"};

}  // namespace engine
