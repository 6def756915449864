// GltfFile: the two forms of a glTF file (glTF 2.0, sections 3.1 and 4): all in one binary file, or
// text with bytes and pictures in files beside it. Pure functions, any thread.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "engine/publish/GltfBuffer.h"
#include "engine/publish/GltfNodes.h"
#include "engine/publish/Publish.h"

namespace engine {

struct GltfParts {
  nlohmann::ordered_json head;  // all members but these lists and those of the buffer
  const GltfNodes& nodes;
  const PublishedMeshes& meshes;
};

// Bytes and files of the scene. Fails where a file would be larger than it can be.
Result<PublishedScene> FinishGltfFile(GltfParts parts, const GltfBuffer& buffer,
                                      const PublishOptions& options);

}  // namespace engine
