// Geometry: a mesh made ready for rays: triangles that can be trusted, normals at their corners and
// the search structure over them. Looks the same forever once made, so that pictures share it.
// Making needs no lock; any thread may look.
#pragma once

#include <embree3/rtcore.h>

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "engine/render/SmoothNormals.h"
#include "engine/render/TracerScene.h"
#include "engine/render/Vec.h"
#include "engine/scene/Mesh.h"

namespace engine {

struct Geometry {
  using Corners = SmoothNormals::Corners;

  PagedVector<Vec> points;
  PagedVector<Corners> triangles;
  PagedVector<std::array<Vec, 3>> ownNormals;            // empty, or one per corner
  std::optional<SmoothNormals> smoothNormals;            // where the mesh has none of its own
  PagedVector<std::array<std::array<float, 2>, 3>> uvs;  // empty, or one per corner
  // Empty, or one per corner: linear, and opacity
  PagedVector<std::array<std::array<float, 4>, 3>> colors;
  // The mesh came with normals, so its faces have a front and a back
  bool hasFront = false;
  Box bounds;
  // Triangles left out because they have no area, no points or no finite ones
  std::size_t dropped = 0;
  std::optional<TracerScene> scene;

  // Unit, one per corner.
  std::array<Vec, 3> NormalsOf(std::size_t triangle) const {
    return smoothNormals ? smoothNormals->Of(triangle) : ownNormals[triangle];
  }
  // Whether memory was too short for its search structure.
  bool IsBroken() const { return scene && scene->IsBroken(); }
};

// Splits, cleans and indexes a mesh; null when nothing of it can be seen. Corners without normals
// get smooth ones, averaged over the faces around their point that turn away by less than 40
// degrees.
std::shared_ptr<const Geometry> MakeGeometry(RTCDevice device, const Mesh& mesh);

}  // namespace engine
