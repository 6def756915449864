// The system's viewer for a kind of file, started as a process of its own. Main thread.
#pragma once

#include <functional>
#include <string>

#include "engine/core/Result.h"

namespace engine {

// Starts it and does not wait. Fails when the system has no such program.
Status StartViewer(const std::string& path);

// From now on `failed` hears, on a thread of its own, of files whose viewer was started and ended
// with a failure: mostly because the system knows no program for such files. One listener at a
// time; without it nobody hears.
void ListenForFailedViewers(std::function<void(const std::string& path)> failed);

}  // namespace engine
