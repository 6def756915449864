// Meshes: section MESHES, every mesh of a scene once, and section COLORS, the colors of those that
// have some. One thread.
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
  // Of the two sections; the second is empty where no mesh has colors.
  struct Sections {
    std::string meshes;
    std::string colors;
  };
  Sections Contents() const;
  // Memory that a reader takes for them, in bytes: an estimate, rather too high than too low.
  std::uint64_t MemoryToRead() const;

 private:
  std::vector<std::shared_ptr<const Mesh>> meshes_;
  std::unordered_map<const Mesh*, std::uint64_t> rows_;
  bool hasColors_ = false;
};

// The meshes by row; `colors` is null without that section. Throws Damage.
std::vector<std::shared_ptr<const Mesh>> ReadMeshes(std::string_view contents,
                                                    const std::string* colors, Budget& budget);

}  // namespace engine
