// GltfGeometry: a mesh as glTF keeps it (glTF 2.0, section 3.7.2): arrays of positions, normals and
// texture coordinates for each vertex, and triangles by their indices, as bytes. Made once for all
// states that show the mesh. Plain data; any thread.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>

#include "engine/scene/Mesh.h"

namespace engine {

// Scene units are centimetres, those of glTF metres.
inline constexpr double kMetresPerUnit = 0.01;

struct GltfGeometry {
  std::string indices;    // 16 bits each where these suffice, else 32; three for a triangle
  std::string positions;  // three floats each: metres, y up, +z towards the viewer
  std::string normals;    // three floats each, unit; empty where the mesh has none
  std::string uvs;        // two floats each, v grows downwards; empty where the mesh has none
  std::string colors;     // four floats each, 0 to 1, linear; empty where the mesh has none
  std::string tangents;   // three floats each, unit, and 1 or -1; empty without one of these two
  std::uint32_t vertices = 0;
  std::uint32_t corners = 0;  // three for a triangle
  bool hasShortIndices = false;
  std::array<float, 3> low{};
  std::array<float, 3> high{};
};

// Triangles without an area, with points that are not there or that are no numbers are left out; a
// normal of no length becomes that of its triangle. Tangents are averaged over the triangles at a
// vertex (glTF 2.0, section 3.7.2.1: the texture's upwards is normal x tangent x the fourth
// number).
GltfGeometry MakeGltfGeometry(const Mesh& mesh);

// Keeps what was made, with the meshes that it was made from.
class GltfGeometries {
 public:
  const GltfGeometry& Of(const std::shared_ptr<const Mesh>& mesh);

 private:
  struct Kept {
    std::shared_ptr<const Mesh> mesh;
    GltfGeometry geometry;
  };
  std::unordered_map<const Mesh*, Kept> kept_;
};

}  // namespace engine
