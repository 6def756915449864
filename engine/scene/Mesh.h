// Mesh: the geometry of a polygon object, a plain value that never changes once an object holds it,
// so that copies and instances share it. Indices are 0-based into `points`; -1 as the fourth marks
// a triangle. The cross product of b - a and c - a points to a polygon's outer side. Any thread.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace engine {

struct Mesh {
  using Polygon = std::array<std::int32_t, 4>;  // corners a, b, c, d; d = -1: a triangle

  std::vector<std::array<float, 3>> points;  // in the object's frame, scene units
  std::vector<Polygon> polygons;
  // Empty, or one per corner in polygon order: 4 per polygon
  std::vector<std::array<float, 3>> normals;
  std::vector<std::array<float, 2>> uvs;  // empty, or 4 per polygon; v grows downwards

  bool operator==(const Mesh&) const = default;
};

}  // namespace engine
