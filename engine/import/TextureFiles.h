// TextureFiles: where an imported scene's textures lie on this machine. Files name them as their
// author's machine did: absolute, with backslashes, percent-encoded; they are looked for as written
// and then by their bare name. Main thread.
#pragma once

#include <string>
#include <vector>

#include "engine/outside/FileSystem.h"
#include "host/BaseDocument.h"

namespace engine {

// Gives every bitmap shader of the materials the full path of its file where it is found: as
// written, below the scene's folder, or by its bare name in that folder and the usual ones below it
// ("tex", "textures", "images", "maps"), letter case aside. Embedded files keep their bare name.
// What is not found stays as written; the result is one note for each.
std::vector<std::string> ResolveTextures(FileSystem& files, host::BaseDocument& doc,
                                         const std::string& scene);

}  // namespace engine
