// Arithmetic on vectors and frames in double precision, for everything that places objects. Pure
// functions, any thread. A picture is reckoned in single precision: see Vec of engine/render.
#pragma once

#include <cmath>
#include <optional>

#include "host/Math.h"

namespace engine {

inline host::Vector Scaled(const host::Vector& v, double s) { return {v.x * s, v.y * s, v.z * s}; }
inline host::Vector Sum(const host::Vector& a, const host::Vector& b) {
  return {a.x + b.x, a.y + b.y, a.z + b.z};
}
inline double DotOf(const host::Vector& a, const host::Vector& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}
inline host::Vector CrossOf(const host::Vector& a, const host::Vector& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline double LengthOf(const host::Vector& v) { return std::sqrt(DotOf(v, v)); }
// The direction with length 1; zero stays zero.
inline host::Vector UnitOf(const host::Vector& v) {
  const double length = LengthOf(v);
  return length > 0 ? Scaled(v, 1 / length) : v;
}

// A direction, and a point, of the frame in the surrounding space.
inline host::Vector TurnedBy(const host::Matrix& m, const host::Vector& v) {
  return Sum(Sum(Scaled(m.v1, v.x), Scaled(m.v2, v.y)), Scaled(m.v3, v.z));
}
inline host::Vector PlacedBy(const host::Matrix& m, const host::Vector& p) {
  return Sum(m.off, TurnedBy(m, p));
}

// `inner` is given in the frame `outer`: the same frame in the space around `outer`.
inline host::Matrix Combined(const host::Matrix& outer, const host::Matrix& inner) {
  host::Matrix result;
  result.off = PlacedBy(outer, inner.off);
  result.v1 = TurnedBy(outer, inner.v1);
  result.v2 = TurnedBy(outer, inner.v2);
  result.v3 = TurnedBy(outer, inner.v3);
  return result;
}

// Volume of the unit cube in the frame, negative where it is mirrored.
inline double Determinant(const host::Matrix& m) { return DotOf(CrossOf(m.v1, m.v2), m.v3); }

// The frame that combined with `outer` is `world`; none where `outer` is flat in a direction.
inline std::optional<host::Matrix> FrameInside(const host::Matrix& outer,
                                               const host::Matrix& world) {
  const double volume = Determinant(outer);
  if (!std::isnormal(volume)) return std::nullopt;
  const host::Vector rows[3] = {CrossOf(outer.v2, outer.v3), CrossOf(outer.v3, outer.v1),
                                CrossOf(outer.v1, outer.v2)};
  const auto inside = [&](const host::Vector& v) {
    return host::Vector(DotOf(rows[0], v) / volume, DotOf(rows[1], v) / volume,
                        DotOf(rows[2], v) / volume);
  };
  host::Matrix result;
  result.off = inside(Sum(world.off, Scaled(outer.off, -1)));
  result.v1 = inside(world.v1);
  result.v2 = inside(world.v2);
  result.v3 = inside(world.v3);
  return result;
}

}  // namespace engine
