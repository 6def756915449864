// GltfMeshes: the meshes of a glTF file as the importing library has them: triangles, with the
// texture coordinates that their material uses, shaped by their morph targets' weights and brought
// by their skin to where its joints are. Lives in the child.
#pragma once

#include <assimp/mesh.h>

#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "engine/import/GltfFile.h"
#include "engine/import/GltfFrames.h"
#include "engine/import/SceneFacts.h"

namespace engine {

class GltfMeshes {
 public:
  // `materials`: those of the file, in its order; behind them the one for meshes that name none.
  GltfMeshes(GltfFile& file, const std::vector<MaterialFacts>& materials, Notes& notes)
      : file_(file), materials_(materials), notes_(notes), frames_(file) {}

  // The parts of the mesh that a node bears, one for each of its primitives, as positions in
  // Made(). Nodes that show the same shape share them.
  std::vector<unsigned> PartsOf(std::size_t node);
  std::vector<std::unique_ptr<aiMesh>>& Made() { return made_; }
  // For each of these the material of each variant, empty where none changes it.
  std::vector<std::vector<unsigned>>& Variants() { return variants_; }

 private:
  struct Pose;
  std::vector<unsigned> MakeParts(const Json& mesh, const Pose& pose);
  std::unique_ptr<aiMesh> MakePart(const Json& source, const Pose& pose);
  unsigned MaterialOf(const Json& source) const;

  GltfFile& file_;
  const std::vector<MaterialFacts>& materials_;
  Notes& notes_;
  GltfFrames frames_;
  std::map<std::pair<std::size_t, std::vector<double>>, std::vector<unsigned>> shared_;
  std::vector<std::unique_ptr<aiMesh>> made_;
  std::vector<std::vector<unsigned>> variants_;
};

}  // namespace engine
