// RayCamera: turns places in the picture into rays. A value; any thread.
#pragma once

#include "engine/render/ScenePicture.h"

namespace engine {

struct Ray {
  Vec origin;
  Vec direction;  // unit
  float near = 0;
  float far = std::numeric_limits<float>::infinity();
};

class RayCamera {
 public:
  RayCamera(const PictureCamera& camera, std::uint32_t width, std::uint32_t height);

  // The ray through a place in pixels from the top left corner.
  Ray Through(float x, float y) const;
  // Where the eye looks there, also for a parallel camera, whose rays all point the same way: for
  // the backdrop.
  Vec BackdropDirection(float x, float y) const;
  // Side of what one pixel covers at that distance.
  float PixelSize(float distance) const { return pixelAtNothing_ + pixelPerDistance_ * distance; }
  Vec Right() const { return right_; }
  Vec Forward() const { return forward_; }

 private:
  Vec Toward(float x, float y, float halfWidth, float halfHeight) const;

  Vec position_;
  Vec right_, up_, forward_;
  bool isParallel_;
  float width_, height_;
  float halfWidth_, halfHeight_;  // at distance 1, or of the whole picture of a parallel camera
  float pixelAtNothing_ = 0;
  float pixelPerDistance_ = 0;
  float near_, far_;
};

}  // namespace engine
