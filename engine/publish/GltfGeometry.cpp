#include "engine/publish/GltfGeometry.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <vector>

namespace engine {

namespace {

using Point = std::array<float, 3>;

// All that makes a corner a vertex of its own.
struct Vertex {
  Point position;
  Point normal;
  std::array<float, 2> uv;
  std::array<float, 4> color;

  bool operator==(const Vertex&) const = default;
};

struct VertexHash {
  std::size_t operator()(const Vertex& vertex) const {
    std::uint64_t hash = 0;
    for (const float* part = vertex.position.data(); part != vertex.position.data() + 3; ++part)
      hash = (hash ^ std::bit_cast<std::uint32_t>(*part)) * 0x9E3779B97F4A7C15u;
    for (const float part : vertex.normal)
      hash = (hash ^ std::bit_cast<std::uint32_t>(part)) * 0x9E3779B97F4A7C15u;
    for (const float part : vertex.uv)
      hash = (hash ^ std::bit_cast<std::uint32_t>(part)) * 0x9E3779B97F4A7C15u;
    for (const float part : vertex.color)
      hash = (hash ^ std::bit_cast<std::uint32_t>(part)) * 0x9E3779B97F4A7C15u;
    return hash ^ hash >> 31;
  }
};

Point Difference(const Point& a, const Point& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }

Point Cross(const Point& a, const Point& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

float Dot(const Point& a, const Point& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

double Magnitude(const Point& a) {
  return std::sqrt(double{a[0]} * a[0] + double{a[1]} * a[1] + double{a[2]} * a[2]);
}

Point Unit(const Point& a) {
  const double length = Magnitude(a);
  const auto part = [&](float value) { return static_cast<float>(value / length); };
  return {part(a[0]), part(a[1]), part(a[2])};
}

bool AreNumbers(const Point& a) {
  return std::isfinite(a[0]) && std::isfinite(a[1]) && std::isfinite(a[2]);
}

// Adding zero turns -0 into 0, so that equal places have equal bits.
Point Mirrored(const Point& a, double scale) {
  const auto part = [&](float value) { return static_cast<float>(value * scale) + 0.0F; };
  return {part(a[0]), part(a[1]), part(-a[2])};
}

class Conversion {
 public:
  explicit Conversion(const Mesh& mesh) : mesh_(mesh) {
    hasNormals_ = mesh.normals.size() == 4 * mesh.polygons.size() && !mesh.normals.empty();
    hasUvs_ = mesh.uvs.size() == 4 * mesh.polygons.size() && !mesh.uvs.empty();
    hasColors_ = mesh.colors.size() == 4 * mesh.polygons.size() && !mesh.colors.empty();
  }

  GltfGeometry Run() {
    for (std::size_t polygon = 0; polygon < mesh_.polygons.size(); ++polygon) {
      AddTriangle(polygon, 0, 1, 2);
      if (mesh_.polygons[polygon][3] >= 0) AddTriangle(polygon, 0, 2, 3);
    }
    if (hasNormals_ && hasUvs_) AddTangents();
    if (out_.vertices <= kMostShort) ShortenIndices();
    return std::move(out_);
  }

 private:
  // The greatest number of 16 bits must not be used.
  static constexpr std::uint32_t kMostShort = 0xFFFF;

  void ShortenIndices() {
    std::string indices;
    indices.reserve(out_.indices.size() / 2);
    for (std::size_t at = 0; at < out_.indices.size(); at += sizeof(std::uint32_t))
      indices.append(out_.indices, at, sizeof(std::uint16_t));
    out_.indices = std::move(indices);
    out_.hasShortIndices = true;
  }

  // Mirroring turns corners round, so the last two change places to face outwards again.
  void AddTriangle(std::size_t polygon, int a, int b, int c) {
    const std::array<int, 3> corners = {a, c, b};
    std::array<Point, 3> places;
    for (std::size_t i = 0; i < 3; ++i) {
      const std::int32_t point = mesh_.polygons[polygon][static_cast<std::size_t>(corners[i])];
      if (point < 0 || static_cast<std::size_t>(point) >= mesh_.points.size()) return;
      places[i] = Mirrored(mesh_.points[static_cast<std::size_t>(point)], kMetresPerUnit);
    }
    const Point across = Cross(Difference(places[1], places[0]), Difference(places[2], places[0]));
    // A triangle without an area has no normal and shows nothing, nor does one with a corner nowhere.
    if (!AreNumbers(across) || !(Magnitude(across) > 0)) return;
    std::array<Vertex, 3> triangle;
    for (std::size_t i = 0; i < 3; ++i) {
      const std::size_t corner = 4 * polygon + static_cast<std::size_t>(corners[i]);
      triangle[i] = {places[i], NormalAt(corner, across), UvAt(corner), ColorAt(corner)};
    }
    const Axes axes = hasUvs_ ? AxesOf(triangle) : Axes();
    for (const Vertex& vertex : triangle) AddCorner(vertex, axes);
  }

  // Where u and the upwards of the texture point to in space.
  struct Axes {
    Point right{};
    Point up{};
  };
  static Axes AxesOf(const std::array<Vertex, 3>& triangle) {
    const Point a = Difference(triangle[1].position, triangle[0].position);
    const Point b = Difference(triangle[2].position, triangle[0].position);
    const float u1 = triangle[1].uv[0] - triangle[0].uv[0];
    const float v1 = triangle[1].uv[1] - triangle[0].uv[1];
    const float u2 = triangle[2].uv[0] - triangle[0].uv[0];
    const float v2 = triangle[2].uv[1] - triangle[0].uv[1];
    const float area = u1 * v2 - u2 * v1;
    Axes axes;
    if (!(std::abs(area) > 1e-20F)) return axes;
    for (std::size_t i = 0; i < 3; ++i) {
      axes.right[i] = (a[i] * v2 - b[i] * v1) / area;
      axes.up[i] = (a[i] * u2 - b[i] * u1) / area;
    }
    return AreNumbers(axes.right) && AreNumbers(axes.up) ? axes : Axes();
  }

  // The sum over the triangles, made upright to the normal. Where the coordinates say nothing any
  // direction along the surface serves: the format knows no vertex without a tangent.
  void AddTangents() {
    for (std::size_t i = 0; i < axes_.size(); ++i) {
      const Point normal = normals_[i];
      const float along = Dot(axes_[i].right, normal);
      Point tangent = axes_[i].right;
      for (std::size_t k = 0; k < 3; ++k) tangent[k] -= along * normal[k];
      if (!(Magnitude(tangent) > 1e-12))
        tangent = Cross(normal, std::abs(normal[1]) < 0.9F ? Point{0, 1, 0} : Point{1, 0, 0});
      tangent = Unit(tangent);
      // Below 0 where the picture is mirrored on the surface.
      const float turn = Dot(Cross(normal, tangent), axes_[i].up) < 0 ? -1.0F : 1.0F;
      Append(out_.tangents, tangent.data(), sizeof tangent);
      Append(out_.tangents, &turn, sizeof turn);
    }
  }

  Point NormalAt(std::size_t corner, const Point& across) const {
    if (!hasNormals_) return {};
    const Point normal = Mirrored(mesh_.normals[corner], 1);
    return AreNumbers(normal) && Magnitude(normal) > 1e-6 ? Unit(normal) : Unit(across);
  }

  std::array<float, 2> UvAt(std::size_t corner) const {
    if (!hasUvs_) return {};
    const auto [u, v] = mesh_.uvs[corner];
    return std::isfinite(u) && std::isfinite(v) ? std::array<float, 2>{u, v}
                                                : std::array<float, 2>{};
  }

  std::array<float, 4> ColorAt(std::size_t corner) const {
    std::array<float, 4> color{1, 1, 1, 1};
    if (!hasColors_) return color;
    for (std::size_t i = 0; i < 4; ++i) {
      const float part = mesh_.colors[corner][i];
      if (std::isfinite(part)) color[i] = std::clamp(part, 0.0F, 1.0F) + 0.0F;
    }
    return color;
  }

  // The format has one index for all that a corner has, so corners that differ in anything are
  // vertices of their own.
  void AddCorner(const Vertex& vertex, const Axes& axes) {
    const auto [place, isNew] = vertices_.try_emplace(vertex, out_.vertices);
    if (isNew) AddVertex(vertex);
    Axes& sum = axes_[place->second];
    for (std::size_t i = 0; i < 3; ++i) {
      sum.right[i] += axes.right[i];
      sum.up[i] += axes.up[i];
    }
    Append(out_.indices, &place->second, sizeof place->second);
    ++out_.corners;
  }

  void AddVertex(const Vertex& vertex) {
    for (std::size_t i = 0; i < 3; ++i) {
      const bool first = out_.vertices == 0;
      out_.low[i] = first ? vertex.position[i] : std::min(out_.low[i], vertex.position[i]);
      out_.high[i] = first ? vertex.position[i] : std::max(out_.high[i], vertex.position[i]);
    }
    ++out_.vertices;
    axes_.emplace_back();
    normals_.push_back(vertex.normal);
    Append(out_.positions, vertex.position.data(), sizeof vertex.position);
    if (hasNormals_) Append(out_.normals, vertex.normal.data(), sizeof vertex.normal);
    if (hasUvs_) Append(out_.uvs, vertex.uv.data(), sizeof vertex.uv);
    if (hasColors_) Append(out_.colors, vertex.color.data(), sizeof vertex.color);
  }

  static void Append(std::string& to, const void* bytes, std::size_t count) {
    to.append(static_cast<const char*>(bytes), count);
  }

  const Mesh& mesh_;
  bool hasNormals_ = false;
  bool hasUvs_ = false;
  bool hasColors_ = false;
  GltfGeometry out_;
  std::vector<Axes> axes_;  // of each vertex, summed up over its triangles
  std::vector<Point> normals_;
  std::unordered_map<Vertex, std::uint32_t, VertexHash> vertices_;
};

}  // namespace

static_assert(std::endian::native == std::endian::little, "glTF's numbers are little-endian");

GltfGeometry MakeGltfGeometry(const Mesh& mesh) { return Conversion(mesh).Run(); }

const GltfGeometry& GltfGeometries::Of(const std::shared_ptr<const Mesh>& mesh) {
  const auto [place, isNew] = kept_.try_emplace(mesh.get());
  if (isNew) place->second = {mesh, MakeGltfGeometry(*mesh)};
  return place->second.geometry;
}

}  // namespace engine
