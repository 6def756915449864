// HitMap: which object is nearest to the eye at each pixel of a picture, and how far away: what a
// view needs to tell what was clicked on, to outline what is selected and to go around what is
// looked at. It holds nothing of the scene. A value; any thread.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "engine/render/RayCamera.h"

namespace engine {

class RayScene;

struct HitMap {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  PictureCamera camera;
  std::vector<std::uint32_t> instances;  // by pixel, row by row: 1 + place in `objects`, 0 for none
  std::vector<float> distances;          // by pixel: along the ray; 0 for none
  std::shared_ptr<const std::vector<NodeId>> objects;

  // 0 for none and outside the picture.
  NodeId ObjectAt(std::uint32_t x, std::uint32_t y) const;
  // The place in the world that is seen there; nothing where there is none.
  std::optional<Vec> PointAt(std::uint32_t x, std::uint32_t y) const;
};

// How a map of another size is made from the hits of a picture: pixel by pixel the nearest one, but
// found anew where an instance that `marked` has a 1 for (by place in `objects`) meets one that it
// has not, so that its outline is exact.
HitMap Enlarged(const HitMap& hits, std::uint32_t width, std::uint32_t height,
                const std::vector<std::uint8_t>& marked, const RayScene& rays);

}  // namespace engine
