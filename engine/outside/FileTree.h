// Removing a folder with all in it, and listing one. Works on directory handles, never follows a
// link, needs two handles however deep the tree is. Main thread.
#pragma once

#include <string>
#include <vector>

#include "engine/core/Result.h"

namespace engine {

// Of a link to a folder only the link. Stops at the first thing that cannot be removed, and at the
// edge of another file system.
Status RemoveFolderTree(const std::string& path);

// Names of the plain files in a folder (links followed), in byte order.
Result<std::vector<std::string>> ListPlainFiles(const std::string& folder);
// The same of the folders in it.
Result<std::vector<std::string>> ListFoldersIn(const std::string& folder);

}  // namespace engine
