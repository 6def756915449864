// GltfReader: a glTF file of version 2 as a scene of the importing library, so that all formats are
// converted alike. The library's own reader loses or confuses too much of it. Materials keep the
// file's order and positions, nodes stand below a root of their own. Lives in the child.
#pragma once

#include <assimp/scene.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "engine/import/GltfFile.h"
#include "engine/import/SceneFacts.h"

namespace engine {

// The library takes nodes apart by recursion, which no stack bears at any depth.
struct SceneDeleter {
  void operator()(aiScene* scene) const;
};

struct GltfScene {
  std::unique_ptr<aiScene, SceneDeleter> scene;
  SceneFacts facts;
};

// The chosen scene of the file, or the first one. `progress` hears 0..1 and stops the work by
// answering false; there is no scene then. Throws UnreadableFile.
GltfScene ReadGltf(GltfFile& file, const std::string& path,
                   const std::function<bool(double)>& progress, Notes& notes);

// The steps of ReadGltf.
// Throws where the file cannot be understood without an extension that is not known here; notes
// the others that are left out.
void CheckExtensions(const GltfFile& file, Notes& notes);
void AddCamerasAndLights(const GltfFile& file, SceneFacts& facts);
NodeFacts NodeFactsOf(const GltfFile& file, const Json& node);
// The text of the members beside the format's own; empty where there are none.
std::string ExtrasText(const Json& value);
// Materials and embedded pictures; behind the file's materials the one for meshes that name none.
void AddMaterials(GltfFile& file, aiScene& scene, SceneFacts& facts, Notes& notes);
// The states that the file, which lies at `path`, holds; of very many the first ones.
void AddStates(const GltfFile& file, const std::string& path, SceneFacts& facts, Notes& notes);
// The material of each variant for a part of a mesh; empty where none changes it.
std::vector<unsigned> VariantsOf(const GltfFile& file, const Json& primitive);
void NameMaterialsOfVariants(const SceneFacts& facts, aiScene& scene);

}  // namespace engine
