// The system's viewer for a kind of file, started as a process of its own. Main thread.
#pragma once

#include <string>

#include "engine/core/Result.h"

namespace engine {

// Starts it and does not wait. Fails when the system has no such program.
Status StartViewer(const std::string& path);

}  // namespace engine
