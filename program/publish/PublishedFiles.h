// PublishedFiles: published scenes as files: the mark by which one is known again that nobody has
// changed since, and writing one with all that it refers to. Main thread.
#pragma once

#include <string>
#include <string_view>

#include "engine/outside/FileSystem.h"
#include "engine/publish/Publish.h"

namespace publishing {

// Whether these are the bytes of a .glb or .gltf file that was written here, whoever changed it.
bool IsPublished(std::string_view bytes);
// The bytes of such a file with the mark in their generator: a hash of all that is in it.
std::string WithMark(std::string bytes);
bool HasMark(std::string_view bytes);

// Writes the scene to an absolute path, and what it refers to beside it: whole, or nothing of it.
// Files beside that are there already and hold something else are replaced where `force` says so,
// else refused. Once it stands, the bytes that the former file at this path had beside it go.
engine::Status WriteScene(engine::FileSystem& files, const std::string& path,
                          engine::PublishedScene scene, bool force);

}  // namespace publishing
