#include "engine/render/Geometry.h"

#include <sys/mman.h>

#include <algorithm>
#include <bit>
#include <span>

namespace engine {

namespace {

constexpr float kSmoothCosine = 0.766F;  // of 40 degrees
// Around a point with more faces than this all of them count: looking at each pair would be
// quadratic.
constexpr std::size_t kMostFacesCompared = 48;
constexpr float kFarthest = 1e9F;

// The origin of the triangles of a mesh: which polygon and corners each triangle came from.
struct Source {
  std::uint32_t polygon;
  std::array<std::uint8_t, 3> corners;
};

bool IsQuad(const Mesh::Polygon& polygon) { return polygon[3] != -1 && polygon[3] != polygon[2]; }

struct Face {
  Vec normal;       // as long as twice the area
  float perLength;  // what makes it one of length 1

  Vec Unit() const { return normal * perLength; }
};

bool IsUsable(const Vec& p) {
  return IsFinite(p) && std::abs(p.x) < kFarthest && std::abs(p.y) < kFarthest &&
         std::abs(p.z) < kFarthest;
}

// Asks for room of that many elements in large pages where there are such: what is filled for the
// first time is handed out by the system page by page, which takes longer than filling it.
template <class Element>
void ReserveLarge(std::vector<Element>& elements, std::size_t count) {
  constexpr std::size_t kLargePage = 2 << 20;
  elements.reserve(count);
  void* begin = elements.data();
  std::size_t bytes = count * sizeof(Element);
  if (bytes >= 2 * kLargePage && std::align(kLargePage, kLargePage, begin, bytes))
    (void)madvise(begin, bytes / kLargePage * kLargePage, MADV_HUGEPAGE);
}

class Cleaning {
 public:
  Cleaning(const Mesh& mesh, Geometry& geometry) : mesh_(mesh), geometry_(geometry) {}

  void Run() {
    // The ray tracer reads points 16 bytes at a time and may look past the last one.
    ReserveLarge(geometry_.points, mesh_.points.size() + 2);
    for (const auto& p : mesh_.points) geometry_.points.push_back({p[0], p[1], p[2]});
    allUsable_ = std::ranges::all_of(geometry_.points, IsUsable);
    uses_.assign(geometry_.points.size() + 1, 0);
    Reserve();
    for (std::uint32_t i = 0; i < mesh_.polygons.size(); ++i) {
      AddTriangle({i, {0, 1, 2}});
      if (IsQuad(mesh_.polygons[i])) AddTriangle({i, {0, 2, 3}});
    }
    for (std::size_t p = 0; p < geometry_.points.size(); ++p) {
      if (uses_[p + 1] > 0) geometry_.bounds.Add(geometry_.points[p]);
    }
    if (!allUsable_) MakeSafePoints();
    if (mesh_.uvs.size() == mesh_.polygons.size() * 4) CopyCorners(mesh_.uvs, 0, geometry_.uvs);
    if (mesh_.colors.size() == mesh_.polygons.size() * 4)
      CopyCorners(mesh_.colors, 1, geometry_.colors);
    if (mesh_.normals.size() == mesh_.polygons.size() * 4) {
      CopyNormals();
    } else {
      const bool isSmall =
          geometry_.triangles.size() < std::numeric_limits<std::uint32_t>::max() / 3;
      isSmall ? SmoothNormals<std::uint32_t>() : SmoothNormals<std::size_t>();
    }
  }

 private:
  void Reserve() {
    const std::size_t triangles =
        mesh_.polygons.size() +
        static_cast<std::size_t>(std::ranges::count_if(mesh_.polygons, IsQuad));
    ReserveLarge(geometry_.triangles, triangles);
    hasCorners_ = !mesh_.uvs.empty() || !mesh_.colors.empty() || !mesh_.normals.empty();
    if (hasCorners_) ReserveLarge(sources_, triangles);
    ReserveLarge(faces_, triangles);
  }

  void AddTriangle(const Source& source) {
    Geometry::Corners corners;
    for (std::size_t c = 0; c < 3; ++c) {
      const std::int32_t index = mesh_.polygons[source.polygon][source.corners[c]];
      if (index < 0 || static_cast<std::size_t>(index) >= geometry_.points.size()) return Drop();
      corners[c] = static_cast<std::uint32_t>(index);
      if (!allUsable_ && !IsUsable(geometry_.points[corners[c]])) return Drop();
    }
    const Vec normal = Cross(geometry_.points[corners[1]] - geometry_.points[corners[0]],
                             geometry_.points[corners[2]] - geometry_.points[corners[0]]);
    const float size = Length(normal);
    if (!(size > 0) || !std::isfinite(size)) return Drop();
    for (const std::uint32_t c : corners) ++uses_[c + 1];
    geometry_.triangles.push_back(corners);
    if (hasCorners_) sources_.push_back(source);
    faces_.push_back({normal, 1 / size});
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
        geometry_.normals[i][c] = usable ? normal : faces_[i].Unit();
      }
    }
  }

  // Corners at each point, as one list with the place where each point's part ends. Corner c of
  // triangle i is number i * 3 + c.
  template <class Number>
  void SmoothNormals() {
    std::vector<std::size_t>& ends = uses_;
    for (std::size_t i = 1; i < ends.size(); ++i) ends[i] += ends[i - 1];
    std::vector<Number> corners;
    ReserveLarge(corners, geometry_.triangles.size() * 3);
    corners.resize(geometry_.triangles.size() * 3);
    Number corner = 0;
    // Each place moves on to its own end, which is where the next point's begins.
    for (const auto& t : geometry_.triangles) {
      for (const std::uint32_t point : t) corners[ends[point]++] = corner++;
    }
    ReserveLarge(geometry_.normals, geometry_.triangles.size());
    geometry_.normals.resize(geometry_.triangles.size());
    std::size_t begin = 0;
    for (std::size_t p = 0; p < geometry_.points.size(); ++p) {
      SmoothPoint(std::span<const Number>(corners).subspan(begin, ends[p] - begin));
      begin = ends[p];
    }
  }

  template <class Number>
  void SmoothPoint(std::span<const Number> corners) {
    if (corners.size() > kMostFacesCompared) return SmoothAll(corners);
    if (CompareFaces(corners)) return SmoothAll(corners);
    for (std::size_t i = 0; i < corners.size(); ++i) {
      Vec sum;
      for (std::uint64_t rest = smooth_[i]; rest != 0; rest &= rest - 1)
        sum += faces_[corners[static_cast<std::size_t>(std::countr_zero(rest))] / 3].normal;
      SetNormal(corners[i], Normalized(sum));
    }
  }

  // One normal for all of the corners around a point.
  template <class Number>
  void SmoothAll(std::span<const Number> corners) {
    Vec sum;
    for (const Number corner : corners) sum += faces_[corner / 3].normal;
    const Vec normal = Normalized(sum);
    for (const Number corner : corners) SetNormal(corner, normal);
  }

  // Finds out which of the faces around a point are smooth with each other; whether all are.
  template <class Number>
  bool CompareFaces(std::span<const Number> corners) {
    bool areAll = true;
    for (std::size_t i = 0; i < corners.size(); ++i) {
      units_[i] = faces_[corners[i] / 3].Unit();
      smooth_[i] = 0;
      for (std::size_t k = 0; k <= i; ++k) {
        const bool isSmooth = Dot(units_[i], units_[k]) > kSmoothCosine;
        areAll = areAll && isSmooth;
        smooth_[i] |= std::uint64_t{isSmooth} << k;
        smooth_[k] |= std::uint64_t{isSmooth} << i;
      }
    }
    return areAll;
  }

  void SetNormal(std::size_t corner, Vec normal) {
    const bool usable = IsFinite(normal) && Dot(normal, normal) > 0.5F;
    geometry_.normals[corner / 3][corner % 3] = usable ? normal : faces_[corner / 3].Unit();
  }

  const Mesh& mesh_;
  Geometry& geometry_;
  std::vector<Source> sources_;
  std::vector<Face> faces_;        // by triangle
  std::vector<std::size_t> uses_;  // at a point's number + 1: corners of triangles there
  // Of the faces around one point: their directions, and with which others each is smooth
  std::array<Vec, kMostFacesCompared> units_;
  std::array<std::uint64_t, kMostFacesCompared> smooth_{};
  bool allUsable_ = true;    // all points
  bool hasCorners_ = false;  // the mesh says something of the corners of its polygons
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
