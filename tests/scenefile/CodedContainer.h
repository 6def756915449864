// A single container as bytes and back, in the frame and with the sections of a scene file, so that
// tests reach the coding of containers without a scene around it. See "Coded containers" in
// docs/SCENE_FILE.md.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "engine/core/Result.h"
#include "host/BaseContainer.h"

namespace tests {

// Everything: own IDs at every depth, order, empty entries, links by identity. Equal containers
// give equal bytes.
std::string EncodeContainer(const host::BaseContainer& container);

// Fails with a message for bytes that EncodeContainer did not write, and for ones that need more
// than `memoryLimit` bytes.
engine::Result<host::BaseContainer> DecodeContainer(std::string_view bytes,
                                                    std::uint64_t memoryLimit = std::uint64_t{1}
                                                                                << 30);

}  // namespace tests
