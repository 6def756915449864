// GltfFrames: where the nodes of a glTF file stand, and where the joints of its skins bring the
// points of a mesh. All frames are in the file's own axes and units. Lives in the child.
#pragma once

#include <optional>
#include <vector>

#include "engine/import/GltfFile.h"
#include "host/Math.h"

namespace engine {

// A node's frame in its parent.
host::Matrix GltfFrameOf(const Json& node);

class GltfFrames {
 public:
  explicit GltfFrames(GltfFile& file) : file_(file) {}
  // For each joint of a skin, what brings a point of the mesh to its place in the node that bears
  // the mesh: the inverse of the node's frame times the joint's frame times the joint's inverse
  // bind matrix. None where the node is flat, so that its frame has no inverse.
  std::optional<std::vector<host::Matrix>> OfJoints(std::size_t skin, std::size_t node);

 private:
  const host::Matrix& InWorld(std::size_t node);
  void PlaceNodes();
  std::vector<host::Matrix> InverseBinds(const Json& skin, std::size_t joints);

  GltfFile& file_;
  std::vector<host::Matrix> world_;  // by node, made when first used
};

}  // namespace engine
