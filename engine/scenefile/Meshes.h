// Meshes: section MESHES, every mesh of a scene once. One thread.
#pragma once

#include <memory>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "engine/scene/Mesh.h"
#include "engine/scenefile/Bytes.h"

namespace engine {

class MeshWriter {
 public:
  // 0 for null, else the mesh's row + 1. Throws Damage for one that a reader would refuse.
  std::uint64_t Row(const std::shared_ptr<const Mesh>& mesh);
  std::string Contents() const;

 private:
  std::vector<std::shared_ptr<const Mesh>> meshes_;
  std::unordered_map<const Mesh*, std::uint64_t> rows_;
};

// The meshes by row. Throws Damage.
std::vector<std::shared_ptr<const Mesh>> ReadMeshes(std::string_view contents, Budget& budget);

}  // namespace engine
