// Publish: a scene as it stands in a format that browsers, engines and other programs read: binary
// glTF 2.0. What the picture shows is what is written: objects that render, with their materials,
// textures, lights and cameras. The document is left alone. Main thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "engine/outside/FileSystem.h"
#include "engine/publish/GltfGeometry.h"
#include "engine/render/RenderCaches.h"
#include "host/BaseDocument.h"

namespace engine {

// Written as the file's generator. The digits are room for a mark by which whoever writes the file
// tells it from one that was changed since.
inline constexpr std::string_view kGltfGenerator = "Stagemarks publish 0000000000000000";

struct PublishOptions {
  std::string scene;  // names of the scene and its state, kept in the file
  std::string state;
  // Objects that do not render are left out; else they are there and marked as not visible by the
  // extension for it.
  bool omitHidden = true;
};

struct PublishedScene {
  std::string bytes;               // of a .glb file
  std::vector<std::string> notes;  // what was left out or changed, a sentence each
  std::size_t objects = 0;         // nodes with a mesh
  std::size_t triangles = 0;
};

// Fails where the file would be larger than the format can hold. `caches` and `geometries` are for
// many states of one scene: each mesh is converted once.
Result<PublishedScene> PublishGltf(const host::BaseDocument& doc, FileSystem& files,
                                   const PublishOptions& options, RenderCaches& caches,
                                   GltfGeometries& geometries);

}  // namespace engine
