#include "program/desktop/view/EditorCamera.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace desktop {

namespace {

using host::Vector;

constexpr double kSteepest = 0.4999 * std::numbers::pi;
constexpr double kNearest = 1e-3;
constexpr double kFarthest = 1e9;

double DotOf(const Vector& a, const Vector& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

Vector Along(const Vector& from, const Vector& way, double length) {
  return {from.x + way.x * length, from.y + way.y * length, from.z + way.z * length};
}

host::Matrix Turned(double heading, double pitch) {
  host::Matrix frame;
  frame.v1 = {std::cos(heading), 0, -std::sin(heading)};
  frame.v2 = {-std::sin(heading) * std::sin(pitch), std::cos(pitch), -std::cos(heading) * std::sin(pitch)};
  frame.v3 = {std::sin(heading) * std::cos(pitch), std::sin(pitch), std::cos(heading) * std::cos(pitch)};
  return frame;
}

}  // namespace

EditorCamera::EditorCamera(const engine::PictureCamera& camera, const engine::Box& interest) : lens_(camera) {
  const Vector& forward = camera.frame.v3;
  heading_ = std::atan2(forward.x, forward.z);
  pitch_ = std::clamp(std::asin(std::clamp(forward.y / std::sqrt(DotOf(forward, forward)), -1.0, 1.0)), -kSteepest, kSteepest);
  if (interest.low.x <= interest.high.x) {
    const engine::Vec middle = interest.Centre();
    const double depth = DotOf(Along({middle.x, middle.y, middle.z}, camera.frame.off, -1), Turned(heading_, pitch_).v3);
    if (std::isfinite(depth) && depth > kNearest) distance_ = depth;
  }
  target_ = Along(camera.frame.off, Turned(heading_, pitch_).v3, distance_);
}

void EditorCamera::Orbit(double heading, double pitch) {
  heading_ = std::remainder(heading_ + heading, 2 * std::numbers::pi);
  pitch_ = std::clamp(pitch_ + pitch, -kSteepest, kSteepest);
}

void EditorCamera::Slide(double right, double down) {
  const host::Matrix frame = Turned(heading_, pitch_);
  const double width = lens_.isParallel ? lens_.width : 2 * distance_ * std::tan(lens_.fov / 2);
  target_ = Along(Along(target_, frame.v1, -right * width), frame.v2, down * width);
}

void EditorCamera::Zoom(double factor) {
  distance_ = std::clamp(distance_ * factor, kNearest, kFarthest);
  lens_.width = std::clamp(lens_.width * factor, kNearest, kFarthest);
}

engine::PictureCamera EditorCamera::Camera() const {
  engine::PictureCamera camera = lens_;
  camera.frame = Turned(heading_, pitch_);
  camera.frame.off = Along(target_, camera.frame.v3, -distance_);
  return camera;
}

}  // namespace desktop
