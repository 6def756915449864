// HostileWorker: what a child that was taken over can still do. For the faulty worker.
#pragma once

#include <string>

namespace tests {

// Confines this process as an import does, to the folder of `scene`, and tries everything that it
// has no need of. The names of what came off, "nothing" where all is forbidden, "no means" where
// the kernel cannot confine.
std::string OpenDoors(const std::string& scene);

}  // namespace tests
