// Textures: which texture references of a scene lead to a file. Main thread.
#pragma once

#include <string>
#include <vector>

#include "host/Host.h"

namespace commandline {

// Names as the scene gives them, each once, in scene order.
std::vector<std::string> TexturesOf(const host::BaseDocument& doc);
// Whether a picture of the scene would show it.
bool IsTextureFound(const host::BaseDocument& doc, const std::string& texture);
// Whether an export gathers it: it looks for the whole name only, as given, in the folder "tex" beside the scene and in the
// global texture paths.
bool IsTextureGathered(const host::BaseDocument& doc, const std::string& texture);

}  // namespace commandline
