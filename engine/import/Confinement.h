// Confinement: what the import child may do. Limits are set before the program is run, file access
// is cut down by the child itself. All of it holds for the rest of the process and can only get
// tighter.
#pragma once

#include <string>
#include <vector>

#include "engine/import/Import.h"

namespace engine {

// Limits on memory, processor time, descriptors, new processes, core dumps and files written. Never
// raises a limit that is tighter already. May be called between fork and exec.
void SetProcessLimits(const ImportLimits& limits);

// From now on files can be opened below `folders` only, and for reading only. Does nothing where
// the kernel has no means for it: FolderFiles checks the same in the importer's own calls.
void AllowReadingOnly(const std::vector<std::string>& folders);

}  // namespace engine
