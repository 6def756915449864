// Where the files of a scene's textures lie: the search that pictures make, for all who want to say
// what a picture will lack. The disk is asked anew each time. Main thread.
#pragma once

#include <string>
#include <vector>

#include "engine/outside/FileSystem.h"
#include "host/BaseDocument.h"

namespace engine {

// Where the file of a texture may lie, in the order of looking: as given, beside the document, in
// its folder "tex", in the global texture paths, each time by the bare name, too; then by the end
// of a way that was another machine's, and in the other usual folders beside the document. Absolute
// paths only.
std::vector<std::string> TexturePlaces(const std::string& name, const std::string& documentFolder);
// The first of these places that holds a file; empty where none does.
std::string FindTexture(FileSystem& files, const std::string& name,
                        const std::string& documentFolder);

// The names of all textures as the scene gives them, each once, in scene order. O(elements).
std::vector<std::string> TextureNames(const host::BaseDocument& doc);
// Whether a picture of the scene would show it: found on the disk or traveling with the scene.
bool IsTextureThere(FileSystem& files, const host::BaseDocument& doc, const std::string& name);
// Those of TextureNames that are not there.
std::vector<std::string> MissingTextures(FileSystem& files, const host::BaseDocument& doc);

}  // namespace engine
