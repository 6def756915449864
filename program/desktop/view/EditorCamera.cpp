// The upright frame comes of two angles: heading around the y axis from +z, pitch up from the
// ground. What a camera has besides, a lean, a mirroring, a scale, is kept as a frame within the
// upright one, so that going around keeps it.
#include "program/desktop/view/EditorCamera.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "engine/scene/Vectors.h"

namespace desktop {

namespace {

using host::Vector;

// A little less than straight up: there the heading would be lost.
constexpr double kSteepest = 0.4999 * std::numbers::pi;
constexpr double kNearest = 1e-3;
constexpr double kFarthest = 1e9;

using engine::DotOf;

Vector Along(const Vector& from, const Vector& way, double length) {
  return {from.x + way.x * length, from.y + way.y * length, from.z + way.z * length};
}

host::Matrix Turned(double heading, double pitch) {
  host::Matrix frame;
  frame.v1 = {std::cos(heading), 0, -std::sin(heading)};
  frame.v2 = {-std::sin(heading) * std::sin(pitch), std::cos(pitch),
              -std::cos(heading) * std::sin(pitch)};
  frame.v3 = {std::sin(heading) * std::cos(pitch), std::sin(pitch),
              std::cos(heading) * std::cos(pitch)};
  return frame;
}

}  // namespace

// The target lies in the middle of the picture at the depth of the interest, so that nothing jumps
// when it is taken over. What is behind the camera or at no depth leaves the distance as it is.
EditorCamera::EditorCamera(const engine::PictureCamera& camera, const engine::Box& interest,
                           Lean lean)
    : lens_(camera) {
  const Vector& forward = camera.frame.v3;
  heading_ = std::atan2(forward.x, forward.z);
  pitch_ =
      std::clamp(std::asin(std::clamp(forward.y / std::sqrt(DotOf(forward, forward)), -1.0, 1.0)),
                 -kSteepest, kSteepest);
  if (interest.low.x <= interest.high.x) {
    const engine::Vec middle = interest.Center();
    const double depth = DotOf(Along({middle.x, middle.y, middle.z}, camera.frame.off, -1),
                               Turned(heading_, pitch_).v3);
    if (std::isfinite(depth) && depth > kNearest) distance_ = depth;
  }
  if (lean == Lean::Keep)
    lean_ = engine::FrameInside(Turned(heading_, pitch_), camera.frame).value_or(host::Matrix());
  lean_.off = {};
  target_ = Along(camera.frame.off, Turned(heading_, pitch_).v3, distance_);
}

host::Matrix EditorCamera::Frame() const {
  return engine::Combined(Turned(heading_, pitch_), lean_);
}

// A perspective camera sees 2 d tan(fov / 2) at the distance d.
double EditorCamera::SeenWidth() const {
  return lens_.isParallel ? lens_.width : 2 * distance_ * std::tan(lens_.fov / 2);
}

// The pitch is bounded before the target is turned, so that both go by the same angle.
void EditorCamera::Orbit(double heading, double pitch, const std::optional<Vector>& around) {
  const Vector center = around.value_or(target_);
  const Vector way = Along(target_, center, -1);
  const host::Matrix from = Turned(heading_, pitch_);
  // The picture follows the mouse where it is mirrored or upside down, too.
  if (lean_.v1.x < 0) heading = -heading;
  if (lean_.v2.y < 0) pitch = -pitch;
  heading_ = std::remainder(heading_ + heading, 2 * std::numbers::pi);
  pitch_ = std::clamp(pitch_ + pitch, -kSteepest, kSteepest);
  const host::Matrix to = Turned(heading_, pitch_);
  // Seen from the camera the target keeps its place beside the center.
  target_ = Along(Along(Along(center, to.v1, DotOf(way, from.v1)), to.v2, DotOf(way, from.v2)),
                  to.v3, DotOf(way, from.v3));
}

// By the axes as they are seen, lean included.
void EditorCamera::Slide(double right, double down) {
  const host::Matrix frame = Frame();
  const double width = SeenWidth();
  target_ = Along(Along(target_, engine::UnitOf(frame.v1), -right * width),
                  engine::UnitOf(frame.v2), down * width);
}

// Moving the target by the same scale keeps `toward` where it is in the picture.
void EditorCamera::Zoom(double factor, const std::optional<Vector>& toward) {
  const double distance = std::clamp(distance_ * factor, kNearest, kFarthest);
  const double scale = distance / distance_;
  distance_ = distance;
  lens_.width = std::clamp(lens_.width * scale, kNearest, kFarthest);
  if (toward) target_ = Along(*toward, Along(target_, *toward, -1), scale);
}

Vector EditorCamera::PointAt(double right, double down, double aspect) const {
  const host::Matrix frame = Frame();
  const double width = SeenWidth();
  return Along(Along(target_, engine::UnitOf(frame.v1), right * width), engine::UnitOf(frame.v2),
               -down * width / aspect);
}

engine::PictureCamera EditorCamera::Camera() const {
  engine::PictureCamera camera = lens_;
  camera.frame = Frame();
  camera.frame.off = Along(target_, Turned(heading_, pitch_).v3, -distance_);
  return camera;
}

}  // namespace desktop
