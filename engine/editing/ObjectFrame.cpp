#include "engine/editing/ObjectFrame.h"

#include <algorithm>
#include <cmath>

namespace engine {

namespace {

using host::Matrix;
using host::Vector;

constexpr double kSmallestScale = 1e-9;
// From here on the turns about Y and Z are one and the same, which is shown as one about Y.
constexpr double kUpright = 1 - 1e-12;

double Dot(const Vector& a, const Vector& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
double Length(const Vector& v) { return std::sqrt(Dot(v, v)); }
Vector Times(const Vector& v, double factor) { return {v.x * factor, v.y * factor, v.z * factor}; }
Vector Sum(const Vector& a, const Vector& b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
Vector Cross(const Vector& a, const Vector& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

// `v` with length 1; `instead` where it has no direction.
Vector Unit(const Vector& v, const Vector& instead) {
  const double length = Length(v);
  return length > 0 && std::isfinite(length) ? Times(v, 1 / length) : instead;
}

// A direction at a right angle to the unit vector `v`, as near to `wish` as can be.
Vector Upright(const Vector& wish, const Vector& v) {
  const auto across = [&v](const Vector& w) { return Sum(w, Times(v, -Dot(w, v))); };
  const Vector straight = across(Unit(wish, {0, 1, 0}));
  return Length(straight) > 1e-9 ? Unit(straight, {0, 1, 0})
                                 : Unit(across({0, 0, std::abs(v.y) > 0.5 ? 1.0 : 0.0}), {1, 0, 0});
}

// The pure turn in a frame: three unit vectors at right angles. By the z axis first, then y: the
// frame may lean, and its lean is kept apart from its turn.
Matrix TurnOf(const Matrix& frame) {
  Matrix turn;
  turn.v3 = Unit(frame.v3, Unit(Cross(frame.v1, frame.v2), {0, 0, 1}));
  turn.v2 = Upright(frame.v2, turn.v3);
  turn.v1 = Cross(turn.v2, turn.v3);
  return turn;
}

// Rz, then Rx, then Ry, as the columns of one matrix.
Matrix TurnBy(const Vector& angles) {
  const double sx = std::sin(angles.x), cx = std::cos(angles.x);
  const double sy = std::sin(angles.y), cy = std::cos(angles.y);
  const double sz = std::sin(angles.z), cz = std::cos(angles.z);
  Matrix turn;
  turn.v1 = {cy * cz + sy * sx * sz, cx * sz, -sy * cz + cy * sx * sz};
  turn.v2 = {-cy * sz + sy * sx * cz, cx * cz, sy * sz + cy * sx * cz};
  turn.v3 = {sy * cx, -sx, cy * cx};
  return turn;
}

Vector Turned(const Matrix& turn, const Vector& v) {
  return Sum(Sum(Times(turn.v1, v.x), Times(turn.v2, v.y)), Times(turn.v3, v.z));
}
Vector TurnedBack(const Matrix& turn, const Vector& v) {
  return {Dot(turn.v1, v), Dot(turn.v2, v), Dot(turn.v3, v)};
}

Vector Scaled(const Vector& axis, double now, double wanted, const Vector& direction) {
  if (now == wanted) return axis;
  if (wanted == 0) wanted = kSmallestScale;
  return std::abs(now) > 0 && std::isfinite(now) ? Times(axis, wanted / now)
                                                 : Times(direction, wanted);
}

}  // namespace

// The inverse of TurnBy; at the poles the other two turns are about one axis.
Vector AnglesOf(const Matrix& frame) {
  const Matrix turn = TurnOf(frame);
  const double sine = -turn.v3.y;
  if (std::abs(sine) > kUpright)
    return {std::copysign(std::asin(1.0), sine), std::atan2(-turn.v1.z, turn.v1.x), 0};
  return {std::asin(sine), std::atan2(turn.v3.x, turn.v3.z), std::atan2(turn.v1.y, turn.v2.y)};
}

Vector ScaleOf(const Matrix& frame) {
  const bool mirrored = Dot(frame.v1, TurnOf(frame).v1) < 0;
  return {mirrored ? -Length(frame.v1) : Length(frame.v1), Length(frame.v2), Length(frame.v3)};
}

// Turned back and forth, so that lengths and lean of the axes stay.
Matrix WithAngles(const Matrix& frame, const Vector& angles) {
  const Matrix before = TurnOf(frame);
  const Matrix after = TurnBy(angles);
  const auto turned = [&](const Vector& axis) { return Turned(after, TurnedBack(before, axis)); };
  Matrix result = frame;
  result.v1 = turned(frame.v1);
  result.v2 = turned(frame.v2);
  result.v3 = turned(frame.v3);
  return result;
}

Matrix WithScale(const Matrix& frame, const Vector& scale) {
  const Matrix turn = TurnOf(frame);
  const Vector now = ScaleOf(frame);
  Matrix result = frame;
  result.v1 = Scaled(frame.v1, now.x, scale.x, turn.v1);
  result.v2 = Scaled(frame.v2, now.y, scale.y, turn.v2);
  result.v3 = Scaled(frame.v3, now.z, scale.z, turn.v3);
  return result;
}

}  // namespace engine
