// Mesh: the geometry of a polygon object, and ObjectShape: where an object is and what it is made
// of. Both are plain values that never change once an object holds them (setting a frame or a mesh
// makes a new shape), so that copies, instances and undo entries share them. Any thread.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "host/Math.h"

namespace host {
class BaseObject;
}

namespace engine {

// Indices are 0-based into `points`; -1 as the fourth marks a triangle. The cross product of b - a
// and c - a points to a polygon's outer side.
struct Mesh {
  using Polygon = std::array<std::int32_t, 4>;  // corners a, b, c, d; d = -1: a triangle

  std::vector<std::array<float, 3>> points;  // in the object's frame, scene units
  std::vector<Polygon> polygons;
  // Empty, or one per corner in polygon order: 4 per polygon
  std::vector<std::array<float, 3>> normals;
  std::vector<std::array<float, 2>> uvs;  // empty, or 4 per polygon; v grows downwards
  // Empty, or 4 per polygon: red, green, blue, linear, and opacity, times those of the material
  std::vector<std::array<float, 4>> colors;

  bool operator==(const Mesh&) const = default;
};

struct ObjectShape {
  host::Matrix frame;
  std::shared_ptr<const Mesh> mesh;
};

// Geometry of a polygon object, null where it has none. Setting marks the document changed. Main
// thread.
const std::shared_ptr<const Mesh>& MeshOf(const host::BaseObject& object);
void SetMesh(host::BaseObject& object, std::shared_ptr<const Mesh> mesh);

}  // namespace engine
