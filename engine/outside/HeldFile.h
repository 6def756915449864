// A file held by this process, for one running program to know of another: the system lets go of it
// when the process ends, however that is. Reads and writes nothing, so there is no entry in the
// ledger. Any thread.
#pragma once

#include <string>

#include "engine/core/Result.h"
#include "engine/outside/FileHandle.h"

namespace engine {

// Holds an existing file while the answer lives. Fails where somebody else holds it, and for a path
// that may not be written.
Result<FileHandle> HoldFile(const std::string& path);

}  // namespace engine
