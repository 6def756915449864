// GltfDraco: a mesh that is packed by KHR_draco_mesh_compression, unpacked. Lives in the child.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "engine/import/GltfAccessors.h"

namespace draco {
class Mesh;
}

namespace engine {

class DracoMesh {
 public:
  // Throws UnreadableFile where the bytes are no packed mesh.
  explicit DracoMesh(std::string_view packed);
  ~DracoMesh();

  // Point indices, three for each triangle.
  std::vector<std::uint32_t> Corners() const;
  // Gives `numbers` the values of the attribute of that number within the packed mesh, one for each
  // of its points, in the kind and width that `numbers` has. The bytes belong to this object.
  void Fill(std::size_t attribute, GltfNumbers& numbers);

 private:
  std::unique_ptr<draco::Mesh> mesh_;
  std::vector<std::unique_ptr<std::string>> values_;
};

}  // namespace engine
