// Vec: three floats with the arithmetic that a renderer needs, and Box. Values; any thread.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

#include "host/Math.h"

namespace engine {

struct Vec {
  float x = 0;
  float y = 0;
  float z = 0;

  bool operator==(const Vec&) const = default;
};

inline Vec operator+(Vec a, Vec b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
inline Vec operator-(Vec a, Vec b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
inline Vec operator-(Vec a) { return {-a.x, -a.y, -a.z}; }
inline Vec operator*(Vec a, Vec b) { return {a.x * b.x, a.y * b.y, a.z * b.z}; }
inline Vec operator*(Vec a, float s) { return {a.x * s, a.y * s, a.z * s}; }
inline Vec& operator+=(Vec& a, Vec b) { return a = a + b; }
inline float Dot(Vec a, Vec b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
inline Vec Cross(Vec a, Vec b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline float Length(Vec a) { return std::sqrt(Dot(a, a)); }
inline float Largest(Vec a) { return std::max({a.x, a.y, a.z}); }
inline Vec Mix(Vec a, Vec b, float t) { return a + (b - a) * t; }
inline bool IsFinite(Vec a) {
  return std::isfinite(a.x) && std::isfinite(a.y) && std::isfinite(a.z);
}
// The direction; zero stays zero.
inline Vec Normalized(Vec a) {
  const float length = Length(a);
  return length > 0 ? a * (1 / length) : a;
}

inline Vec ToVec(const host::Vector& v) {
  return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)};
}

struct Box {
  Vec low{std::numeric_limits<float>::infinity(), std::numeric_limits<float>::infinity(),
          std::numeric_limits<float>::infinity()};
  Vec high{-low.x, -low.y, -low.z};

  bool IsEmpty() const { return low.x > high.x; }
  void Add(Vec p) {
    low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
    high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
  }
  Vec Center() const { return (low + high) * 0.5F; }
  // Corner 0 to 7.
  Vec Corner(int i) const {
    return {i & 1 ? high.x : low.x, i & 2 ? high.y : low.y, i & 4 ? high.z : low.z};
  }
};

}  // namespace engine
