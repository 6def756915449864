#include "engine/render/RayCamera.h"

#include <utility>

#include "engine/scene/Vectors.h"

namespace engine {

namespace {

constexpr double kSmallestAngle = 0.001;
constexpr double kLargestAngle = 3.1;
constexpr double kFramingAngle = 0.65;
constexpr double kMargin = 1.1;
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
      far_(camera.far > camera.near ? static_cast<float>(camera.far)
                                    : std::numeric_limits<float>::infinity()) {
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

namespace {

// Where the camera stands: sideways and up from the center of what it shows, and how far back.
struct Middle {
  double x = 0;
  double y = 0;
  double distance = 1e-3;
};

// Goes back until all points lie inside, then puts what is seen into the middle of the picture. The
// points are given in the directions of the camera.
Middle Improved(const Middle& from, const std::vector<Vec>& points, double halfX, double halfY) {
  double left = 1e30, right = -1e30, low = 1e30, high = -1e30;
  Middle to{0, 0, 1e-3};
  for (const Vec& p : points) {
    to.distance =
        std::max(to.distance,
                 std::max(std::abs(p.x - from.x) / halfX, std::abs(p.y - from.y) / halfY) - p.z);
  }
  for (const Vec& p : points) {
    const double depth = std::max(p.z + to.distance, 1e-6);
    left = std::min(left, (p.x - from.x) / depth);
    right = std::max(right, (p.x - from.x) / depth);
    low = std::min(low, (p.y - from.y) / depth);
    high = std::max(high, (p.y - from.y) / depth);
  }
  to.x = from.x + (left + right) / 2 * to.distance;
  to.y = from.y + (low + high) / 2 * to.distance;
  return to;
}

// The place along one axis, `value` of a point, from which the points take up as much of the picture
// on one side as on the other. Going to one side leaves more on the other, so halving the range
// finds it.
template <class Value>
double Centered(const std::vector<Vec>& points, double distance, double low, double high,
                Value value) {
  constexpr int kHalvings = 24;
  for (int i = 0; i < kHalvings; ++i) {
    const double at = (low + high) / 2;
    double least = 1e30, most = -1e30;
    for (const Vec& p : points) {
      const double seen = (value(p) - at) / std::max(p.z + distance, 1e-6);
      least = std::min(least, seen);
      most = std::max(most, seen);
    }
    (least + most > 0 ? low : high) = at;
  }
  return (low + high) / 2;
}

// From the planes at the sides of the picture, each moved up to the points: on both axes these say
// how far back the camera has to go.
Middle BetweenPlanes(const std::vector<Vec>& points, double halfX, double halfY) {
  double left = 1e30, right = -1e30, low = 1e30, high = -1e30;
  for (const Vec& p : points) {
    left = std::min(left, p.x + halfX * p.z);
    right = std::max(right, p.x - halfX * p.z);
    low = std::min(low, p.y + halfY * p.z);
    high = std::max(high, p.y - halfY * p.z);
  }
  Middle middle;
  const double d = middle.distance =
      std::max({middle.distance, (right - left) / 2 / halfX, (high - low) / 2 / halfY});
  middle.x = Centered(points, d, right - halfX * d, left + halfX * d,
                      [](const Vec& p) -> double { return p.x; });
  middle.y = Centered(points, d, high - halfY * d, low + halfY * d,
                      [](const Vec& p) -> double { return p.y; });
  return middle;
}

// A part that sticks out on one side more than on the other moves the middle, which changes the
// distance: it settles quickly, but for wide lenses close to deep things, where it need not.
Middle MiddleOf(const std::vector<Vec>& points, double halfX, double halfY) {
  constexpr double kSettled = 0.01;  // of half a picture
  Middle before;
  Middle middle;
  for (int round = 0; round < 8; ++round)
    before = std::exchange(middle, Improved(middle, points, halfX, halfY));
  const double moved =
      std::max(std::abs(middle.x - before.x) / halfX, std::abs(middle.y - before.y) / halfY) /
      middle.distance;
  return moved < kSettled ? middle : BetweenPlanes(points, halfX, halfY);
}

constexpr std::size_t kMostOutlinePoints = 60000;

}  // namespace

std::vector<Vec> OutlineOf(const ScenePicture& picture, const std::vector<std::uint8_t>* chosen) {
  std::vector<Vec> points;
  const auto isMeant = [&](std::size_t i) {
    return picture.instances[i].geometry && (!chosen || (*chosen)[i]);
  };
  std::size_t count = 0;
  for (std::size_t i = 0; i < picture.instances.size(); ++i) count += isMeant(i);
  const std::size_t share =
      std::max<std::size_t>(8, kMostOutlinePoints / std::max<std::size_t>(1, count));
  for (std::size_t k = 0; k < picture.instances.size(); ++k) {
    if (!isMeant(k)) continue;
    const Instance& instance = picture.instances[k];
    const Geometry& geometry = *instance.geometry;
    const std::size_t step = std::max<std::size_t>(1, geometry.triangles.size() * 3 / share);
    for (std::size_t i = 0; i < geometry.triangles.size() * 3; i += step) {
      const Vec p = geometry.points[geometry.triangles[i / 3][i % 3]];
      points.push_back(ToVec(PlacedBy(instance.frame, {p.x, p.y, p.z})));
    }
  }
  return points;
}

namespace {

PictureCamera CameraFrom(double turn) {
  PictureCamera camera;
  camera.fov = kFramingAngle;
  camera.frame.v3 = UnitOf({-std::sin(turn), -0.467, std::cos(turn)});
  camera.frame.v1 = UnitOf(CrossOf({0, 1, 0}, camera.frame.v3));
  camera.frame.v2 = CrossOf(camera.frame.v3, camera.frame.v1);
  return camera;
}

double HalfWidth(const PictureCamera& camera, double aspect) {
  return camera.fovVertical > 0 ? HalfTangent(camera.fovVertical) * aspect
                                : HalfTangent(camera.fov);
}

// A parallel camera stands before all of the points, given in its directions, and is as wide as
// they need.
host::Vector StandBefore(const std::vector<Vec>& points, double aspect, double* width) {
  Box box;
  for (const Vec& p : points) box.Add(p);
  const Vec size = box.high - box.low;
  *width = std::max(1e-3, std::max<double>(size.x, size.y * aspect) * kMargin);
  const Vec center = box.Center();
  return {center.x, center.y, box.low.z - static_cast<double>(size.z) - *width};
}

}  // namespace

PictureCamera FramingCamera(std::vector<Vec> points, double aspect, double turn) {
  return FramingCameraLike(CameraFrom(turn), std::move(points), aspect);
}

PictureCamera FramingCameraLike(PictureCamera camera, std::vector<Vec> points, double aspect) {
  if (points.empty()) points = {{-100, -100, -100}, {100, 100, 100}};
  Box box;
  for (const Vec& p : points) box.Add(p);
  const Vec center = box.Center();
  // A camera may be scaled; what it sees is not.
  const host::Matrix axes{
      {}, UnitOf(camera.frame.v1), UnitOf(camera.frame.v2), UnitOf(camera.frame.v3)};
  for (Vec& p : points) {
    const Vec way = p - center;
    p = {Dot(way, ToVec(axes.v1)), Dot(way, ToVec(axes.v2)), Dot(way, ToVec(axes.v3))};
  }
  host::Vector place;
  if (camera.isParallel) {
    place = StandBefore(points, aspect, &camera.width);
  } else {
    const double halfX = HalfWidth(camera, aspect) / kMargin;
    const Middle middle = MiddleOf(points, halfX, halfX / aspect);
    place = {middle.x, middle.y, -middle.distance};
  }
  camera.frame.off = Sum(TurnedBy(axes, place), {center.x, center.y, center.z});
  return camera;
}

PictureCamera ShowingAllOf(const EditorView& view, double aspect) {
  PictureCamera camera = view.camera;
  const double wider = aspect / view.aspect;
  if (camera.isParallel) {
    camera.width *= std::max(1.0, wider);
  } else if (camera.fovVertical <= 0 && wider > 1) {
    camera.fovVertical = 2 * std::atan(HalfTangent(camera.fov) / view.aspect);
  } else if (camera.fovVertical > 0 && wider < 1) {
    camera.fov = 2 * std::atan(HalfTangent(camera.fovVertical) * view.aspect);
    camera.fovVertical = 0;
  }
  return camera;
}

}  // namespace engine
