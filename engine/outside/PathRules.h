// The rules that every path meets before anything is done with it. Texts only, the disk is not
// touched. Any thread.
#pragma once

#include <string>

#include "engine/core/Result.h"

namespace engine {

// The path with doubled separators, "." components and trailing separators taken away; fails for
// one that is empty, relative or holds a NUL byte.
Result<std::string> PathForReading(const std::string& path);
// PathForReading that also fails for a ".." component, counting '\' as a separator, too, and for
// the root folder.
Result<std::string> PathForWriting(const std::string& path);

}  // namespace engine
