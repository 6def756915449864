// GltfPrimitive: one part of a mesh in a glTF file: its attributes and its triangles, packed
// (KHR_draco_mesh_compression) or not. Lives in the child.
#pragma once

#include <assimp/mesh.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "engine/import/GltfAccessors.h"
#include "engine/import/GltfDraco.h"
#include "engine/import/Notes.h"

namespace engine {

class GltfPrimitive {
 public:
  // Unpacks it where it is packed. `file`, `source` and `notes` outlive this object.
  GltfPrimitive(GltfFile& file, const Json& source, Notes& notes);

  // False for points, lines, and what has no positions.
  bool HasTriangles() const { return mode_ >= kTriangles && points_ > 0; }
  // Points, lines or triangles, as the importing library has them; whether there are any or not.
  unsigned Kind() const {
    return mode_ >= kTriangles ? aiPrimitiveType_TRIANGLE
           : mode_ > 0         ? aiPrimitiveType_LINE
                               : aiPrimitiveType_POINT;
  }
  std::size_t Points() const { return points_; }
  // Nothing where it is missing; noted where it has too few elements for the points.
  std::optional<GltfNumbers> Attribute(const std::string& name, unsigned width);
  // Attribute of one of its morph targets.
  std::optional<GltfNumbers> Attribute(const Json& target, const char* name, unsigned width);
  const Json& Targets() const { return List(source_, "targets"); }
  // Point indices, three for each triangle; they may name points that do not exist.
  std::vector<std::uint32_t> Corners();

 private:
  static constexpr std::size_t kTriangles = 4;
  static constexpr std::size_t kStrip = 5;
  static constexpr std::size_t kFan = 6;
  std::optional<GltfNumbers> Fitting(GltfNumbers numbers, unsigned width);
  std::optional<GltfNumbers> Numbers(const std::string& name);
  std::vector<std::uint32_t> Indices();

  GltfFile& file_;
  const Json& source_;
  Notes& notes_;
  const Json& packing_;
  std::size_t mode_;
  std::size_t points_ = 0;
  std::unique_ptr<DracoMesh> unpacked_;
};

}  // namespace engine
