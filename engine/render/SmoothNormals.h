// SmoothNormals: normals at the corners of triangles, averaged over the faces around their point
// that turn away by less than 40 degrees. Those around a point are made when a ray first needs one
// of them, and kept: a picture of a large mesh begins without the normals of what it does not show.
// It refers to points and triangles, which must outlive it. Any thread may ask; two that need a
// point at the same time both write the same.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <span>
#include <vector>

#include "engine/render/PageAllocator.h"
#include "engine/render/Vec.h"

namespace engine {

class SmoothNormals {
 public:
  using Corners = std::array<std::uint32_t, 3>;

  // Fewer than 2^32 triangles, each with three different points and an area. Throws std::bad_alloc
  // where there is not enough memory for all that may be asked for.
  SmoothNormals(std::span<const Vec> points, std::span<const Corners> triangles);

  // Unit, one per corner.
  std::array<Vec, 3> Of(std::size_t triangle) const {
    for (const std::uint32_t point : triangles_[triangle]) {
      if (!isMade_[point].load(std::memory_order_acquire)) Make(point);
    }
    return {Read(triangle * 3), Read(triangle * 3 + 1), Read(triangle * 3 + 2)};
  }

 private:
  // A corner's place among those of all triangles, three for each.
  std::size_t CornerAt(std::uint32_t triangle, std::uint32_t point) const {
    const Corners& corners = triangles_[triangle];
    return std::size_t{triangle} * 3 + (corners[0] == point ? 0U : corners[1] == point ? 1U : 2U);
  }
  // As long as twice the area.
  Vec Across(std::uint32_t triangle) const {
    const Corners& corners = triangles_[triangle];
    const Vec first = points_[corners[0]];
    return Cross(points_[corners[1]] - first, points_[corners[2]] - first);
  }
  Vec Read(std::size_t corner) const {
    Vec& normal = normals_[corner];
    constexpr auto kOrder = std::memory_order_relaxed;
    return {std::atomic_ref(normal.x).load(kOrder), std::atomic_ref(normal.y).load(kOrder),
            std::atomic_ref(normal.z).load(kOrder)};
  }
  void Write(std::size_t corner, Vec value) const {
    Vec& normal = normals_[corner];
    constexpr auto kOrder = std::memory_order_relaxed;
    std::atomic_ref(normal.x).store(value.x, kOrder);
    std::atomic_ref(normal.y).store(value.y, kOrder);
    std::atomic_ref(normal.z).store(value.z, kOrder);
  }

  void Make(std::uint32_t point) const;
  // One normal for all of the corners at a point.
  void MakeOne(std::uint32_t point) const;

  std::span<const Vec> points_;
  std::span<const Corners> triangles_;
  PagedVector<std::uint32_t> first_;               // by point: the first triangle there
  PagedVector<std::uint32_t> next_;                // by corner: the next triangle at its point
  mutable PagedVector<Vec> normals_;               // by corner, filled where asked for
  mutable std::vector<std::atomic<bool>> isMade_;  // by point
};

}  // namespace engine
