// ExrHead: what the head of an OpenEXR file claims, held against its size before the library takes
// memory for it. Any thread.
#pragma once

#include <string_view>

#include "engine/core/Result.h"

namespace engine {

// Success where every attribute lies within the file, and no picture, chunk of lines or tile in it
// asks for more memory than a file of that size may (Codecs.h); else a message. What a head means
// besides is left to the library.
Status CheckExrClaims(std::string_view bytes);

}  // namespace engine
