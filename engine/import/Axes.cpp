#include "engine/import/Axes.h"

#include <cmath>

#include "engine/scene/Vectors.h"

namespace engine {
namespace {

using host::Matrix;
using host::Vector;

// Adding zero turns -0 into 0: frames of a file are written into scenes, where the two differ.
Vector Mirrored(double x, double y, double z) { return Vector(x, y, 0.0 - z); }
Vector Times(const Vector& v, double factor) {
  return Vector(v.x * factor + 0.0, v.y * factor + 0.0, v.z * factor + 0.0);
}
Vector Unit(const Vector& v) {
  const double length = LengthOf(v);
  return length > 0 ? Times(v, 1 / length) : v;
}
// Linear part of a frame applied to a direction.
Vector Turned(const Matrix& frame, const Vector& v) {
  return Sum(Sum(Times(frame.v1, v.x), Times(frame.v2, v.y)), Times(frame.v3, v.z));
}
bool IsFinite(const Vector& v) {
  return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

}  // namespace

Matrix ConvertFrame(const aiMatrix4x4& frame, double scale) {
  Matrix result;
  result.v1 = Mirrored(frame.a1, frame.b1, frame.c1);
  result.v2 = Mirrored(frame.a2, frame.b2, frame.c2);
  // S on both sides: the third axis is mirrored as an axis and once more in its own z.
  result.v3 = Times(Mirrored(frame.a3, frame.b3, frame.c3), -1);
  result.off = Times(Mirrored(frame.a4, frame.b4, frame.c4), scale);
  return result;
}

Matrix FrameLooking(const aiVector3D& look, const aiVector3D& up) {
  const Vector forward = Unit(Mirrored(look.x, look.y, look.z));
  // Also for numbers that are none.
  if (!(LengthOf(forward) > 0)) return {};
  Vector right = CrossOf(Mirrored(up.x, up.y, up.z), forward);
  // Up along the line of sight says nothing of the roll: any other axis serves.
  if (LengthOf(right) < 1e-6)
    right = CrossOf(std::abs(forward.y) < 0.9 ? Vector(0, 1, 0) : Vector(0, 0, 1), forward);
  Matrix result;
  result.v3 = forward;
  result.v1 = Unit(right);
  result.v2 = CrossOf(result.v3, result.v1);
  return result;
}

Matrix Product(const Matrix& outer, const Matrix& inner) {
  Matrix result;
  result.v1 = Turned(outer, inner.v1);
  result.v2 = Turned(outer, inner.v2);
  result.v3 = Turned(outer, inner.v3);
  result.off = Sum(outer.off, Turned(outer, inner.off));
  return result;
}

// For cameras and lights, whose sizes a scaled frame would change, and for the root, whose scale
// goes into all lengths.
Matrix WithoutScale(const Matrix& frame) {
  Matrix result = frame;
  result.v1 = Unit(frame.v1);
  result.v2 = Unit(frame.v2);
  result.v3 = Unit(frame.v3);
  return result;
}

double UniformScale(const aiMatrix4x4& frame) {
  const Matrix axes = ConvertFrame(frame, 1);
  const double length = LengthOf(axes.v1);
  const bool same = std::abs(LengthOf(axes.v2) - length) <= 1e-3 * length &&
                    std::abs(LengthOf(axes.v3) - length) <= 1e-3 * length;
  return same && std::isfinite(length) ? length : 0;
}

bool IsFinite(const Matrix& frame) {
  return IsFinite(frame.off) && IsFinite(frame.v1) && IsFinite(frame.v2) && IsFinite(frame.v3);
}

}  // namespace engine
