#include "engine/render/RayCamera.h"

#include "engine/render/Frames.h"

namespace engine {

namespace {

constexpr double kSmallestAngle = 0.001;
constexpr double kLargestAngle = 3.1;
constexpr double kFramingAngle = 0.65;
constexpr double kBackdropAngle = 0.9;

// An angle that is no number counts as the smallest one.
double HalfTangent(double angle) {
  return std::tan((angle > kSmallestAngle ? std::min(angle, kLargestAngle) : kSmallestAngle) / 2);
}

}  // namespace

RayCamera::RayCamera(const PictureCamera& camera, std::uint32_t width, std::uint32_t height)
    : position_(ToVec(camera.frame.off)),
      right_(ToVec(UnitOf(camera.frame.v1))),
      up_(ToVec(UnitOf(camera.frame.v2))),
      forward_(ToVec(UnitOf(camera.frame.v3))),
      isParallel_(camera.isParallel),
      width_(static_cast<float>(width)),
      height_(static_cast<float>(height)),
      near_(static_cast<float>(camera.near)),
      far_(camera.far > camera.near ? static_cast<float>(camera.far) : std::numeric_limits<float>::infinity()) {
  const double aspect = static_cast<double>(width) / static_cast<double>(height);
  double half = HalfTangent(camera.fov);
  if (camera.fovVertical > 0) half = HalfTangent(camera.fovVertical) * aspect;
  if (isParallel_) half = (camera.width > 0 ? camera.width : 1) / 2;
  halfWidth_ = static_cast<float>(half);
  halfHeight_ = static_cast<float>(half / aspect);
  (isParallel_ ? pixelAtNothing_ : pixelPerDistance_) = 2 * halfWidth_ / width_;
}

Vec RayCamera::Toward(float x, float y, float halfWidth, float halfHeight) const {
  return right_ * ((2 * x / width_ - 1) * halfWidth) + up_ * ((1 - 2 * y / height_) * halfHeight);
}

Ray RayCamera::Through(float x, float y) const {
  const Vec side = Toward(x, y, halfWidth_, halfHeight_);
  if (isParallel_) return {position_ + side, forward_, near_, far_};
  const Vec direction = forward_ + side;
  // The limits are meant along the axis of the camera.
  const float slant = Length(direction);
  return {position_, direction * (1 / slant), near_ * slant, far_ * slant};
}

Vec RayCamera::BackdropDirection(float x, float y) const {
  if (!isParallel_) return Through(x, y).direction;
  const auto half = static_cast<float>(HalfTangent(kBackdropAngle));
  return Normalized(forward_ + Toward(x, y, half, half * height_ / width_));
}

PictureCamera FramingCamera(const Box& bounds, double aspect) {
  Box box = bounds;
  if (box.IsEmpty()) {
    box.Add({-100, -100, -100});
    box.Add({100, 100, 100});
  }
  PictureCamera camera;
  camera.fov = kFramingAngle;
  camera.frame.v3 = UnitOf({-0.62, -0.48, 0.82});
  camera.frame.v1 = UnitOf(CrossOf({0, 1, 0}, camera.frame.v3));
  camera.frame.v2 = CrossOf(camera.frame.v3, camera.frame.v1);
  const double halfX = HalfTangent(kFramingAngle);
  const double halfY = halfX / aspect;
  const Vec centre = box.Centre();
  double distance = 1e-3;
  for (int i = 0; i < 8; ++i) {
    const Vec corner = box.Corner(i) - centre;
    const host::Vector p{corner.x, corner.y, corner.z};
    const double across = std::max(std::abs(DotOf(p, camera.frame.v1)) / halfX, std::abs(DotOf(p, camera.frame.v2)) / halfY);
    distance = std::max(distance, across - DotOf(p, camera.frame.v3));
  }
  constexpr double kMargin = 1.06;
  camera.frame.off = Sum({centre.x, centre.y, centre.z}, Scaled(camera.frame.v3, -distance * kMargin));
  return camera;
}

}  // namespace engine
