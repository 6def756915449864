#include "engine/render/Geometry.h"

#include <algorithm>
#include <vector>

namespace engine {

namespace {

constexpr float kFarthest = 1e9F;

// The origin of the triangles of a mesh: which polygon and corners each triangle came from.
struct Source {
  std::uint32_t polygon;
  std::array<std::uint8_t, 3> corners;
};

bool IsQuad(const Mesh::Polygon& polygon) { return polygon[3] != -1 && polygon[3] != polygon[2]; }

bool IsUsable(const Vec& p) {
  return IsFinite(p) && std::abs(p.x) < kFarthest && std::abs(p.y) < kFarthest &&
         std::abs(p.z) < kFarthest;
}

class Cleaning {
 public:
  Cleaning(const Mesh& mesh, Geometry& geometry) : mesh_(mesh), geometry_(geometry) {}

  void Run() {
    TakePoints();
    Reserve();
    for (std::uint32_t i = 0; i < mesh_.polygons.size(); ++i) {
      AddTriangle({i, {0, 1, 2}});
      if (IsQuad(mesh_.polygons[i])) AddTriangle({i, {0, 2, 3}});
    }
    for (std::size_t p = 0; p < geometry_.points.size(); ++p) {
      if (isUsed_[p]) geometry_.bounds.Add(geometry_.points[p]);
    }
    if (!allUsable_) MakeSafePoints();
    if (mesh_.uvs.size() == mesh_.polygons.size() * 4) CopyCorners(mesh_.uvs, 0, geometry_.uvs);
    if (mesh_.colors.size() == mesh_.polygons.size() * 4)
      CopyCorners(mesh_.colors, 1, geometry_.colors);
    if (mesh_.normals.size() == mesh_.polygons.size() * 4) {
      CopyNormals();
    } else {
      geometry_.smoothNormals.emplace(geometry_.points, geometry_.triangles);
    }
  }

 private:
  // The ray tracer reads points 16 bytes at a time and may look past the last one.
  void TakePoints() {
    geometry_.points.reserve(mesh_.points.size() + 2);
    for (const auto& p : mesh_.points) {
      geometry_.points.push_back({p[0], p[1], p[2]});
      allUsable_ = allUsable_ && IsUsable(geometry_.points.back());
    }
  }

  void Reserve() {
    const std::size_t triangles =
        mesh_.polygons.size() +
        static_cast<std::size_t>(std::ranges::count_if(mesh_.polygons, IsQuad));
    geometry_.triangles.reserve(triangles);
    hasCorners_ = !mesh_.uvs.empty() || !mesh_.colors.empty() || !mesh_.normals.empty();
    if (hasCorners_) sources_.reserve(triangles);
    isUsed_.resize(geometry_.points.size());
  }

  void AddTriangle(const Source& source) {
    Geometry::Corners corners;
    for (std::size_t c = 0; c < 3; ++c) {
      const std::int32_t index = mesh_.polygons[source.polygon][source.corners[c]];
      if (index < 0 || static_cast<std::size_t>(index) >= geometry_.points.size()) return Drop();
      corners[c] = static_cast<std::uint32_t>(index);
      if (!allUsable_ && !IsUsable(geometry_.points[corners[c]])) return Drop();
    }
    const bool isLine =
        corners[0] == corners[1] || corners[1] == corners[2] || corners[2] == corners[0];
    if (isLine) return Drop();
    const Vec across = Across(corners);
    const float squares = Dot(across, across);
    if (!(squares > 0) || !std::isfinite(squares)) return Drop();
    for (const std::uint32_t corner : corners) isUsed_[corner] = 1;
    geometry_.triangles.push_back(corners);
    if (hasCorners_) sources_.push_back(source);
  }

  Vec Across(const Geometry::Corners& corners) const {
    return Cross(geometry_.points[corners[1]] - geometry_.points[corners[0]],
                 geometry_.points[corners[2]] - geometry_.points[corners[0]]);
  }

  void Drop() { ++geometry_.dropped; }

  // Points that no triangle uses may still be anything.
  void MakeSafePoints() {
    for (Vec& p : geometry_.points) p = IsUsable(p) ? p : Vec{};
  }

  // A corner with a value that is not finite gets `instead` for all its values.
  template <std::size_t N>
  void CopyCorners(const std::vector<std::array<float, N>>& from, float instead,
                   PagedVector<std::array<std::array<float, N>, 3>>& to) const {
    to.resize(sources_.size());
    for (std::size_t i = 0; i < sources_.size(); ++i) {
      for (std::size_t c = 0; c < 3; ++c) {
        to[i][c] = from[sources_[i].polygon * 4 + sources_[i].corners[c]];
        const bool finite = std::ranges::all_of(to[i][c], [](float x) { return std::isfinite(x); });
        if (!finite) to[i][c].fill(instead);
      }
    }
  }

  void CopyNormals() {
    geometry_.hasFront = true;
    geometry_.ownNormals.resize(sources_.size());
    for (std::size_t i = 0; i < sources_.size(); ++i) {
      for (std::size_t c = 0; c < 3; ++c) {
        const auto& n = mesh_.normals[sources_[i].polygon * 4 + sources_[i].corners[c]];
        const Vec normal = Normalized({n[0], n[1], n[2]});
        const bool usable = IsFinite(normal) && Dot(normal, normal) > 0.5F;
        geometry_.ownNormals[i][c] = usable ? normal : Normalized(Across(geometry_.triangles[i]));
      }
    }
  }

  const Mesh& mesh_;
  Geometry& geometry_;
  PagedVector<Source> sources_;
  std::vector<std::uint8_t> isUsed_;  // by point: 1 where a triangle has a corner there
  bool allUsable_ = true;             // all points
  bool hasCorners_ = false;           // the mesh says something of the corners of its polygons
};

void Index(RTCDevice device, Geometry& geometry) {
  TracerScene& scene = geometry.scene.emplace(device);
  RTCGeometry triangles = rtcNewGeometry(device, RTC_GEOMETRY_TYPE_TRIANGLE);
  rtcSetSharedGeometryBuffer(triangles, RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT3,
                             geometry.triangles.data(), 0, sizeof(Geometry::Corners),
                             geometry.triangles.size());
  rtcSetSharedGeometryBuffer(triangles, RTC_BUFFER_TYPE_VERTEX, 0, RTC_FORMAT_FLOAT3,
                             geometry.points.data(), 0, sizeof(Vec), geometry.points.size());
  rtcCommitGeometry(triangles);
  rtcAttachGeometry(scene.Get(), triangles);
  rtcReleaseGeometry(triangles);
  scene.Build();
}

}  // namespace

std::shared_ptr<const Geometry> MakeGeometry(RTCDevice device, const Mesh& mesh) {
  auto geometry = std::make_shared<Geometry>();
  Cleaning(mesh, *geometry).Run();
  if (geometry->triangles.empty()) return nullptr;
  Index(device, *geometry);
  return geometry;
}

}  // namespace engine
