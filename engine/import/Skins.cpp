#include "engine/import/Skins.h"

#include <cmath>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace engine {
namespace {

bool HasSkins(const aiScene& scene) {
  for (unsigned i = 0; i < scene.mNumMeshes; ++i) {
    if (scene.mMeshes[i]->mNumBones > 0) return true;
  }
  return false;
}

// One mesh while it is bent: the weighted frames of its points are summed up.
class Bending {
 public:
  explicit Bending(aiMesh& mesh)
      : mesh_(mesh), sums_(mesh.mNumVertices, Nothing()), weights_(mesh.mNumVertices, 0.0F) {}

  void Add(const aiBone& bone, const aiMatrix4x4& frame) {
    for (unsigned i = 0; i < bone.mNumWeights; ++i) {
      const aiVertexWeight& weight = bone.mWeights[i];
      if (weight.mVertexId >= mesh_.mNumVertices || !std::isfinite(weight.mWeight)) continue;
      sums_[weight.mVertexId] = sums_[weight.mVertexId] + frame * weight.mWeight;
      weights_[weight.mVertexId] += weight.mWeight;
    }
  }

  // Points that no bone holds stay where they are.
  void Finish() {
    for (unsigned i = 0; i < mesh_.mNumVertices; ++i) {
      if (!(weights_[i] > 0)) continue;
      const aiMatrix4x4 frame = sums_[i] * (1 / weights_[i]);
      mesh_.mVertices[i] = frame * mesh_.mVertices[i];
      if (mesh_.mNormals == nullptr) continue;
      const aiVector3D normal = aiMatrix3x3(frame) * mesh_.mNormals[i];
      if (normal.SquareLength() > 0) mesh_.mNormals[i] = aiVector3D(normal).NormalizeSafe();
    }
  }

 private:
  static aiMatrix4x4 Nothing() {
    return aiMatrix4x4(0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
  }

  aiMesh& mesh_;
  std::vector<aiMatrix4x4> sums_;
  std::vector<float> weights_;
};

class Skinning {
 public:
  explicit Skinning(aiScene& scene) : scene_(scene) { Place(); }

  void Run() {
    std::vector<bool> isBent(scene_.mNumMeshes, false);
    for (const auto& [node, frame] : nodes_) {
      for (unsigned i = 0; i < node->mNumMeshes; ++i) {
        const unsigned mesh = node->mMeshes[i];
        if (mesh >= isBent.size() || isBent[mesh]) continue;
        // Its points are changed in place, so once only.
        isBent[mesh] = true;
        Bend(*scene_.mMeshes[mesh], frame);
      }
    }
  }

 private:
  // All nodes with their frames in the world; of a name the first one is the bone.
  void Place() {
    std::vector<std::pair<const aiNode*, aiMatrix4x4>> pending{{scene_.mRootNode, aiMatrix4x4()}};
    while (!pending.empty()) {
      const auto [node, above] = pending.back();
      pending.pop_back();
      const aiMatrix4x4 frame = above * node->mTransformation;
      nodes_.emplace_back(node, frame);
      named_.try_emplace(node->mName.C_Str(), frame);
      for (unsigned i = node->mNumChildren; i > 0; --i)
        pending.emplace_back(node->mChildren[i - 1], frame);
    }
  }

  void Bend(aiMesh& mesh, aiMatrix4x4 frame) {
    // A node that is flat in a direction has no way back from the world into it.
    if (mesh.mNumBones == 0 || mesh.mVertices == nullptr || frame.Determinant() == 0) return;
    const aiMatrix4x4 back = frame.Inverse();
    Bending bending(mesh);
    for (unsigned i = 0; i < mesh.mNumBones; ++i) {
      const aiBone& bone = *mesh.mBones[i];
      const auto place = named_.find(bone.mName.C_Str());
      if (place != named_.end()) bending.Add(bone, back * place->second * bone.mOffsetMatrix);
    }
    bending.Finish();
  }

  aiScene& scene_;
  std::vector<std::pair<const aiNode*, aiMatrix4x4>> nodes_;
  std::unordered_map<std::string, aiMatrix4x4> named_;
};

}  // namespace

void BendSkins(aiScene& scene) {
  if (scene.mRootNode != nullptr && HasSkins(scene)) Skinning(scene).Run();
}

}  // namespace engine
