#include "engine/render/Primitives.h"

#include <algorithm>
#include <cmath>

#include "engine/render/Vec.h"
#include "host/BaseObject.h"
#include "host/Parameters.h"

namespace engine {

namespace {

constexpr float kPi = 3.14159265358979F;
constexpr host::LONG kMostSegments = 512;

struct Surface {
  Vec point;
  Vec normal;
};

// Adds a grid of columns x rows quadrilaterals; `at` gives the surface at u, v in 0..1.
template <class At>
void AddGrid(Mesh& mesh, int columns, int rows, const At& at) {
  const auto first = static_cast<std::int32_t>(mesh.points.size());
  std::vector<Vec> normals;
  const auto share = [](int i, int n) { return static_cast<float>(i) / static_cast<float>(n); };
  for (int j = 0; j <= rows; ++j) {
    for (int i = 0; i <= columns; ++i) {
      const Surface s = at(share(i, columns), share(j, rows));
      mesh.points.push_back({s.point.x, s.point.y, s.point.z});
      normals.push_back(s.normal);
    }
  }
  for (int j = 0; j < rows; ++j) {
    for (int i = 0; i < columns; ++i) {
      const int corner = j * (columns + 1) + i;
      const std::array<int, 4> corners = {corner, corner + 1, corner + columns + 2,
                                          corner + columns + 1};
      mesh.polygons.push_back(
          {first + corners[0], first + corners[1], first + corners[2], first + corners[3]});
      for (const int c : corners) {
        const Vec n = normals[static_cast<std::size_t>(c)];
        mesh.normals.push_back({n.x, n.y, n.z});
        mesh.uvs.push_back({share(c % (columns + 1), columns), share(c / (columns + 1), rows)});
      }
    }
  }
}

Vec OnCircle(float u, float radius, float y) {
  return {radius * std::cos(2 * kPi * u), y, radius * std::sin(2 * kPi * u)};
}

void AddSphere(Mesh& mesh, float radius, int segments) {
  AddGrid(mesh, segments, std::max(2, segments / 2), [&](float u, float v) {
    const Vec normal = OnCircle(u, std::sin(kPi * v), std::cos(kPi * v));
    return Surface{normal * radius, normal};
  });
}

void AddTorus(Mesh& mesh, float ring, float tube, int segments) {
  AddGrid(mesh, segments, std::max(3, segments / 2), [&](float u, float v) {
    const Vec normal = OnCircle(u, std::cos(2 * kPi * v), std::sin(2 * kPi * v));
    return Surface{OnCircle(u, ring + tube * std::cos(2 * kPi * v), tube * std::sin(2 * kPi * v)),
                   normal};
  });
}

void AddDisc(Mesh& mesh, float radius, float y, float up, int segments) {
  AddGrid(mesh, segments, 1, [&](float u, float v) {
    return Surface{OnCircle(u, radius * v, y), {0, up, 0}};
  });
}

// The side of a cone or cylinder from the top radius down to the bottom one.
void AddSide(Mesh& mesh, float top, float bottom, float height, int segments) {
  const Vec slope = Normalized({height, bottom - top, 0});
  AddGrid(mesh, segments, 1, [&](float u, float v) {
    const Vec point = OnCircle(u, top + (bottom - top) * v, height * (0.5F - v));
    return Surface{point, OnCircle(u, slope.x, slope.y)};
  });
}

void AddRectangle(Mesh& mesh, Vec center, Vec right, Vec down) {
  const Vec normal = Normalized(Cross(right, down));
  AddGrid(mesh, 1, 1, [&](float u, float v) {
    return Surface{center + right * (2 * u - 1) + down * (2 * v - 1), normal};
  });
}

void AddCube(Mesh& mesh, Vec half) {
  const Vec x{half.x, 0, 0};
  const Vec y{0, half.y, 0};
  const Vec z{0, 0, half.z};
  AddRectangle(mesh, -z, x, -y);
  AddRectangle(mesh, z, -x, -y);
  AddRectangle(mesh, x, z, -y);
  AddRectangle(mesh, -x, -z, -y);
  AddRectangle(mesh, y, x, -z);
  AddRectangle(mesh, -y, x, z);
}

// A length of the parameters; what is no sensible one counts as 0.
float LengthAt(const host::BaseContainer& data, host::LONG id) {
  const double value = data.GetReal(id);
  return value > 0 && value < 1e12 ? static_cast<float>(value) : 0.0F;
}

bool HasSize(std::initializer_list<float> lengths) {
  return std::all_of(lengths.begin(), lengths.end(), [](float length) { return length > 0; });
}

Vec HalfSize(const host::BaseContainer& data) {
  const Vec size = ToVec(data.GetVector(host::PRIM_SIZE));
  return IsFinite(size) ? Vec{std::abs(size.x) / 2, std::abs(size.y) / 2, std::abs(size.z) / 2}
                        : Vec{};
}

}  // namespace

bool IsPrimitive(host::LONG type) {
  return type == host::Ocube || type == host::Osphere || type == host::Ocone ||
         type == host::Otorus || type == host::Odisc || type == host::Oplane ||
         type == host::Ocylinder;
}

Mesh MakePrimitive(host::LONG type, const host::BaseContainer& data) {
  Mesh mesh;
  const float radius = LengthAt(data, host::PRIM_RADIUS);
  const float tube = LengthAt(data, host::PRIM_RADIUS2);
  const float height = LengthAt(data, host::PRIM_HEIGHT);
  const float width = LengthAt(data, host::PRIM_WIDTH);
  const int segments =
      std::clamp<host::LONG>(data.GetLong(host::PRIM_SEGMENTS, 36), 3, kMostSegments);
  const Vec half = HalfSize(data);
  if (type == host::Ocube && HasSize({half.x, half.y, half.z})) AddCube(mesh, half);
  if (type == host::Osphere && HasSize({radius})) AddSphere(mesh, radius, segments);
  if (type == host::Otorus && HasSize({radius, tube})) AddTorus(mesh, radius, tube, segments);
  if (type == host::Odisc && HasSize({radius})) AddDisc(mesh, radius, 0, 1, segments);
  if (type == host::Oplane && HasSize({width, height}))
    AddRectangle(mesh, {}, {width / 2, 0, 0}, {0, 0, -height / 2});
  if (type == host::Ocone && HasSize({radius, height})) {
    AddSide(mesh, 0, radius, height, segments);
    AddDisc(mesh, radius, -height / 2, -1, segments);
  }
  if (type == host::Ocylinder && HasSize({radius, height})) {
    AddSide(mesh, radius, radius, height, segments);
    AddDisc(mesh, radius, height / 2, 1, segments);
    AddDisc(mesh, radius, -height / 2, -1, segments);
  }
  return mesh;
}

}  // namespace engine
