// One container as bytes and back, in the frame of the scene file: for preferences and for scenes
// handed between processes. See "Coded containers" in docs/SCENE_FILE.md. Any thread that owns the
// container.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "engine/core/Result.h"
#include "host/BaseContainer.h"

namespace engine {

// Everything: own IDs at every depth, order, empty entries, links by identity. Equal containers
// give equal bytes.
std::string EncodeContainer(const host::BaseContainer& container);

// Fails with a message for bytes that EncodeContainer did not write, and for ones that need more
// than `memoryLimit` bytes.
Result<host::BaseContainer> DecodeContainer(std::string_view bytes,
                                            std::uint64_t memoryLimit = std::uint64_t{1} << 30);

}  // namespace engine
