// TextureFiles: where an imported scene's textures lie on this machine. Files name them as their
// author's machine did: absolute, with backslashes, percent-encoded; they are looked for as written
// and then by their bare name. Main thread.
#pragma once

#include <string>
#include <vector>

#include "engine/import/Import.h"
#include "engine/outside/Services.h"
#include "host/BaseDocument.h"

namespace engine {

// Gives every bitmap shader of the materials the full path of its file where it is found: as
// written, below the scene's folder, or by its bare name in that folder and the usual ones below it
// ("tex", "textures", "images", "maps"), letter case aside. Embedded files keep their bare name.
// A file found only outside the scene's folder is taken as `outside` says, for which the person may
// be asked, and only if it is a picture; otherwise the shader gets its bare name, so that nothing
// reads or copies it. A path where nothing is found stays as written. The result is one note for
// each texture that is missing, left out or no picture.
std::vector<std::string> ResolveTextures(const Services& services, host::BaseDocument& doc,
                                         const std::string& scene, OutsideTextures outside);

}  // namespace engine
