#include "engine/import/GltfReader.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "engine/import/GltfFrames.h"
#include "engine/import/GltfMeshes.h"

namespace engine {
namespace {

constexpr double kUnitsPerMetre = 100;
// Between two questions whether to go on; a node may bear a large mesh.
constexpr std::size_t kNodesPerStep = 64;

// The library's matrices are written row by row.
aiMatrix4x4 LibraryFrame(const host::Matrix& m) {
  const auto f = [](double number) { return static_cast<float>(number); };
  return aiMatrix4x4(f(m.v1.x), f(m.v2.x), f(m.v3.x), f(m.off.x), f(m.v1.y), f(m.v2.y), f(m.v3.y),
                     f(m.off.y), f(m.v1.z), f(m.v2.z), f(m.v3.z), f(m.off.z), 0, 0, 0, 1);
}

// The numbers of a list of nodes.
std::vector<std::size_t> NodesOf(const Json& list) {
  std::vector<std::size_t> nodes;
  for (std::size_t i = 0; i < SizeOf(list); ++i) nodes.push_back(IndexAt(list, i, "nodes"));
  return nodes;
}

// Without scenes all nodes are shown that are nobody's child.
std::vector<std::size_t> Parentless(const GltfFile& file) {
  const std::size_t count = file.Count("nodes");
  std::vector<bool> isChild(count, false);
  for (std::size_t i = 0; i < count; ++i) {
    for (const std::size_t child : NodesOf(List(file.Entry("nodes", i), "children"))) {
      if (child < count) isChild[child] = true;
    }
  }
  std::vector<std::size_t> nodes;
  for (std::size_t i = 0; i < count; ++i) {
    if (!isChild[i]) nodes.push_back(i);
  }
  return nodes;
}

std::vector<std::size_t> Roots(const GltfFile& file) {
  if (file.Count("scenes") == 0) return Parentless(file);
  return NodesOf(List(file.Entry("scenes", Index(file.Top(), "scene", 0)), "nodes"));
}

class TreeReader {
 public:
  TreeReader(GltfFile& file, GltfScene& result, Notes& notes)
      : file_(file),
        result_(result),
        notes_(notes),
        meshes_(file, result.facts.materials, notes),
        isPlaced_(file.Count("nodes"), false) {
    result.facts.numbered.assign(isPlaced_.size(), nullptr);
  }

  // False when `progress` stopped it.
  bool Read(const std::function<bool(double)>& progress) {
    const double total = static_cast<double>(std::max<std::size_t>(isPlaced_.size(), 1));
    AddChildren(*result_.scene->mRootNode, Roots(file_));
    for (std::size_t done = 0; !pending_.empty(); ++done) {
      if (done % kNodesPerStep == 0 && !progress(static_cast<double>(done) / total)) return false;
      const auto [index, node] = pending_.back();
      pending_.pop_back();
      Fill(index, *node);
    }
    HandOverMeshes();
    return true;
  }

 private:
  struct Pending {
    std::size_t index;
    aiNode* node;
  };

  // A node stands in one place: whatever names it once more is damaged, be it a ring.
  void AddChildren(aiNode& parent, std::vector<std::size_t> children) {
    const std::size_t named = children.size();
    std::erase_if(children, [&](std::size_t child) {
      file_.Entry("nodes", child);
      const bool again = isPlaced_[child];
      isPlaced_[child] = true;
      return again;
    });
    notes_.Count("Nodes that are named in several places stand in the first one only",
                 named - children.size());
    if (children.empty()) return;
    parent.mChildren = new aiNode*[children.size()];
    for (const std::size_t child : children) {
      auto* node = new aiNode;
      parent.mChildren[parent.mNumChildren++] = node;
      pending_.push_back({child, node});
    }
  }

  void Fill(std::size_t index, aiNode& node) {
    const Json& source = file_.Entry("nodes", index);
    node.mTransformation = LibraryFrame(GltfFrameOf(source));
    result_.facts.nodes[&node] = NodeFactsOf(file_, source);
    result_.facts.numbered[index] = &node;
    const std::vector<unsigned> parts = meshes_.PartsOf(index);
    if (!parts.empty()) {
      node.mMeshes = new unsigned[parts.size()];
      node.mNumMeshes = static_cast<unsigned>(parts.size());
      std::copy(parts.begin(), parts.end(), node.mMeshes);
    }
    AddChildren(node, NodesOf(List(source, "children")));
  }

  void HandOverMeshes() {
    aiScene& scene = *result_.scene;
    std::vector<std::unique_ptr<aiMesh>>& made = meshes_.Made();
    scene.mMeshes = new aiMesh*[made.size()];
    for (std::unique_ptr<aiMesh>& mesh : made) scene.mMeshes[scene.mNumMeshes++] = mesh.release();
    result_.facts.variants = std::move(meshes_.Variants());
  }

  GltfFile& file_;
  GltfScene& result_;
  Notes& notes_;
  GltfMeshes meshes_;
  std::vector<bool> isPlaced_;
  std::vector<Pending> pending_;
};

}  // namespace

void SceneDeleter::operator()(aiScene* scene) const {
  std::vector<aiNode*> pending{scene->mRootNode};
  while (!pending.empty()) {
    aiNode* node = pending.back();
    pending.pop_back();
    if (node == nullptr) continue;
    pending.insert(pending.end(), node->mChildren, node->mChildren + node->mNumChildren);
    node->mNumChildren = 0;
    if (node != scene->mRootNode) delete node;
  }
  delete scene;
}

GltfScene ReadGltf(GltfFile& file, const std::string& path,
                   const std::function<bool(double)>& progress, Notes& notes) {
  CheckExtensions(file, notes);
  GltfScene result{std::unique_ptr<aiScene, SceneDeleter>(new aiScene), {}};
  result.facts.unitsPerFileUnit = kUnitsPerMetre;
  result.scene->mRootNode = new aiNode;
  AddCamerasAndLights(file, result.facts);
  AddMaterials(file, *result.scene, result.facts, notes);
  if (!TreeReader(file, result, notes).Read(progress)) return {};
  if (file.Count("scenes") > 0)
    result.facts.extras = ExtrasText(file.Entry("scenes", Index(file.Top(), "scene", 0)));
  AddStates(file, path, result.facts, notes);
  NameMaterialsOfVariants(result.facts, *result.scene);
  NormalizeLights(SourceFormat::Gltf, result.facts.lights);
  const std::size_t scenes = file.Count("scenes");
  notes.Count("Other scenes of the file are left out", scenes > 0 ? scenes - 1 : 0);
  notes.Count(kAnimationsLeftOut, file.Count("animations"));
  return result;
}

}  // namespace engine
