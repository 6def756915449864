// Vector, Matrix and BaseTime: plain numbers. Lengths are scene units, angles radians, the
// coordinate system is left-handed with Y up. Any thread.
#pragma once

#include "host/Types.h"

namespace host {

// A point, a direction, a size, or a color (red, green, blue).
struct Vector {
  Real x = 0;
  Real y = 0;
  Real z = 0;

  Vector() = default;
  explicit Vector(Real value) : x(value), y(value), z(value) {}
  Vector(Real ix, Real iy, Real iz) : x(ix), y(iy), z(iz) {}
  Bool operator==(const Vector& o) const { return x == o.x && y == o.y && z == o.z; }
  Bool operator!=(const Vector& o) const { return !(*this == o); }
};

// An affine frame: a point p becomes off + p.x * v1 + p.y * v2 + p.z * v3. Starts as the identity.
struct Matrix {
  Vector off;
  Vector v1{1, 0, 0};
  Vector v2{0, 1, 0};
  Vector v3{0, 0, 1};

  Bool operator==(const Matrix& o) const {
    return off == o.off && v1 == o.v1 && v2 == o.v2 && v3 == o.v3;
  }
  Bool operator!=(const Matrix& o) const { return !(*this == o); }
};

// A time as a frame number and its rate in frames per second. The pair is kept as given.
class BaseTime {
 public:
  BaseTime() = default;
  explicit BaseTime(Real seconds) : numerator_(seconds), denominator_(1) {}
  BaseTime(Real frame, Real rate) : numerator_(frame), denominator_(rate) {}

  // Seconds; 0 where the rate is 0.
  Real Get() const { return denominator_ == 0 ? 0 : numerator_ / denominator_; }
  Real GetNumerator() const { return numerator_; }
  Real GetDenominator() const { return denominator_; }
  // The frame at `rate` frames per second, rounded to the nearest one. Counts from 0 at time 0; a
  // negative time has negative frames.
  LONG GetFrame(Real rate) const;

  // Equal pairs, not equal seconds.
  Bool operator==(const BaseTime& o) const {
    return numerator_ == o.numerator_ && denominator_ == o.denominator_;
  }
  Bool operator!=(const BaseTime& o) const { return !(*this == o); }

 private:
  Real numerator_ = 0;
  Real denominator_ = 1;
};

}  // namespace host
