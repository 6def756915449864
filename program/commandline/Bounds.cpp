#include "program/commandline/Bounds.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "engine/scene/Mesh.h"
#include "engine/scene/Nodes.h"

namespace commandline {

using host::Vector;

namespace {

constexpr double kInfinite = std::numeric_limits<double>::infinity();

struct Box {
  Vector low{kInfinite};
  Vector high{-kInfinite};

  void Add(const Vector& p) {
    if (!std::isfinite(p.x) || !std::isfinite(p.y) || !std::isfinite(p.z)) return;
    low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
    high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
  }
};

Vector Transformed(const host::Matrix& m, const std::array<float, 3>& p) {
  const double x = p[0];
  const double y = p[1];
  const double z = p[2];
  return {m.off.x + x * m.v1.x + y * m.v2.x + z * m.v3.x, m.off.y + x * m.v1.y + y * m.v2.y + z * m.v3.y,
          m.off.z + x * m.v1.z + y * m.v2.z + z * m.v3.z};
}

}  // namespace

Bounds BoundsOf(const host::BaseDocument& doc) {
  Box box;
  for (host::BaseObject* object = doc.GetFirstObject(); object; object = engine::NextInTree(object)) {
    const auto& mesh = engine::MeshOf(*object);
    if (!mesh) continue;
    const host::Matrix frame = object->GetMg();
    for (const auto& point : mesh->points) box.Add(Transformed(frame, point));
  }
  if (box.low.x > box.high.x) return {};
  const Vector size{box.high.x - box.low.x, box.high.y - box.low.y, box.high.z - box.low.z};
  return {{(box.low.x + box.high.x) / 2, (box.low.y + box.high.y) / 2, (box.low.z + box.high.z) / 2},
          std::sqrt(size.x * size.x + size.y * size.y + size.z * size.z) / 2};
}

Vector ViewPoint(const Bounds& bounds, double turn) {
  const double distance = std::max(bounds.radius, 1.0) * 1.75;
  return {bounds.centre.x + distance * std::sin(turn), bounds.centre.y + distance * 0.5,
          bounds.centre.z - distance * std::cos(turn)};
}

}  // namespace commandline
