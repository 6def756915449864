#include "engine/render/Geometry.h"

#include <algorithm>

namespace engine {

namespace {

constexpr float kSmoothCosine = 0.766F;  // of 40 degrees
// Around a point with more faces than this all of them count: looking at each pair would be
// quadratic.
constexpr std::size_t kMostFacesCompared = 48;
constexpr float kFarthest = 1e9F;

// The origin of the triangles of a mesh: which polygon and corners each triangle came from.
struct Source {
  std::size_t polygon;
  std::array<std::uint8_t, 3> corners;
};

bool IsUsable(const Vec& p) {
  return IsFinite(p) && std::abs(p.x) < kFarthest && std::abs(p.y) < kFarthest &&
         std::abs(p.z) < kFarthest;
}

class Cleaning {
 public:
  Cleaning(const Mesh& mesh, Geometry& geometry) : mesh_(mesh), geometry_(geometry) {}

  void Run() {
    for (const auto& p : mesh_.points) geometry_.points.push_back({p[0], p[1], p[2]});
    for (std::size_t i = 0; i < mesh_.polygons.size(); ++i) {
      AddTriangle({i, {0, 1, 2}});
      const Mesh::Polygon& polygon = mesh_.polygons[i];
      if (polygon[3] != -1 && polygon[3] != polygon[2]) AddTriangle({i, {0, 2, 3}});
    }
    MakeSafePoints();
    if (mesh_.uvs.size() == mesh_.polygons.size() * 4) CopyCorners(mesh_.uvs, 0, geometry_.uvs);
    if (mesh_.colors.size() == mesh_.polygons.size() * 4)
      CopyCorners(mesh_.colors, 1, geometry_.colors);
    if (mesh_.normals.size() == mesh_.polygons.size() * 4) {
      CopyNormals();
    } else {
      SmoothNormals();
    }
  }

 private:
  void AddTriangle(const Source& source) {
    Geometry::Corners corners;
    for (std::size_t c = 0; c < 3; ++c) {
      const std::int32_t index = mesh_.polygons[source.polygon][source.corners[c]];
      if (index < 0 || static_cast<std::size_t>(index) >= geometry_.points.size()) return Drop();
      corners[c] = static_cast<std::uint32_t>(index);
      if (!IsUsable(geometry_.points[corners[c]])) return Drop();
    }
    const Vec normal = Cross(geometry_.points[corners[1]] - geometry_.points[corners[0]],
                             geometry_.points[corners[2]] - geometry_.points[corners[0]]);
    const float size = Length(normal);
    if (!(size > 0) || !std::isfinite(size)) return Drop();
    for (const std::uint32_t c : corners) geometry_.bounds.Add(geometry_.points[c]);
    geometry_.triangles.push_back(corners);
    sources_.push_back(source);
    faceNormals_.push_back(normal);
  }

  void Drop() { ++geometry_.dropped; }

  // Points that no triangle uses may still be anything.
  void MakeSafePoints() {
    for (Vec& p : geometry_.points) p = IsUsable(p) ? p : Vec{};
  }

  // What is no number becomes `instead`, with all that belongs to it.
  template <std::size_t N>
  void CopyCorners(const std::vector<std::array<float, N>>& from, float instead,
                   std::vector<std::array<std::array<float, N>, 3>>& to) const {
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
    geometry_.normals.resize(sources_.size());
    for (std::size_t i = 0; i < sources_.size(); ++i) {
      for (std::size_t c = 0; c < 3; ++c) {
        const auto& n = mesh_.normals[sources_[i].polygon * 4 + sources_[i].corners[c]];
        const Vec normal = Normalized({n[0], n[1], n[2]});
        const bool usable = IsFinite(normal) && Dot(normal, normal) > 0.5F;
        geometry_.normals[i][c] = usable ? normal : Normalized(faceNormals_[i]);
      }
    }
  }

  // Triangles around each point, as one list with the place where each point's part begins.
  void CollectFaces() {
    firstFace_.assign(geometry_.points.size() + 1, 0);
    for (const auto& t : geometry_.triangles) {
      for (const std::uint32_t c : t) ++firstFace_[c + 1];
    }
    for (std::size_t i = 1; i < firstFace_.size(); ++i) firstFace_[i] += firstFace_[i - 1];
    faces_.resize(geometry_.triangles.size() * 3);
    std::vector<std::size_t> next(firstFace_.begin(), firstFace_.end() - 1);
    for (std::size_t i = 0; i < geometry_.triangles.size(); ++i) {
      for (const std::uint32_t c : geometry_.triangles[i]) faces_[next[c]++] = i;
    }
  }

  // Sum of all face normals around each point with many faces; others stay zero.
  std::vector<Vec> SumsOfCrowdedPoints() const {
    std::vector<Vec> sums(geometry_.points.size());
    for (std::size_t p = 0; p < sums.size(); ++p) {
      if (firstFace_[p + 1] - firstFace_[p] <= kMostFacesCompared) continue;
      for (std::size_t k = firstFace_[p]; k < firstFace_[p + 1]; ++k)
        sums[p] += faceNormals_[faces_[k]];
    }
    return sums;
  }

  Vec SumOfSmoothFaces(std::uint32_t point, std::size_t face) const {
    const Vec own = Normalized(faceNormals_[face]);
    Vec sum;
    for (std::size_t k = firstFace_[point]; k < firstFace_[point + 1]; ++k) {
      const Vec other = faceNormals_[faces_[k]];
      if (Dot(own, Normalized(other)) > kSmoothCosine) sum += other;
    }
    return sum;
  }

  void SmoothNormals() {
    CollectFaces();
    const std::vector<Vec> crowded = SumsOfCrowdedPoints();
    geometry_.normals.resize(geometry_.triangles.size());
    for (std::size_t i = 0; i < geometry_.triangles.size(); ++i) {
      for (std::size_t c = 0; c < 3; ++c) {
        const std::uint32_t p = geometry_.triangles[i][c];
        const bool isCrowded = firstFace_[p + 1] - firstFace_[p] > kMostFacesCompared;
        const Vec sum = Normalized(isCrowded ? crowded[p] : SumOfSmoothFaces(p, i));
        const bool usable = IsFinite(sum) && Dot(sum, sum) > 0.5F;
        geometry_.normals[i][c] = usable ? sum : Normalized(faceNormals_[i]);
      }
    }
  }

  const Mesh& mesh_;
  Geometry& geometry_;
  std::vector<Source> sources_;
  std::vector<Vec> faceNormals_;  // as long as twice the area
  std::vector<std::size_t> firstFace_;
  std::vector<std::size_t> faces_;
};

void Index(RTCDevice device, Geometry& geometry) {
  TracerScene& scene = geometry.scene.emplace(device);
  RTCGeometry triangles = rtcNewGeometry(device, RTC_GEOMETRY_TYPE_TRIANGLE);
  rtcSetSharedGeometryBuffer(triangles, RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT3,
                             geometry.triangles.data(), 0, sizeof(Geometry::Corners),
                             geometry.triangles.size());
  // The library reads points 16 bytes at a time and may look past the last one.
  geometry.points.reserve(geometry.points.size() + 2);
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
