#include "engine/render/Geometry.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

#include "engine/render/Four.h"

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

// A corner of a triangle, as one number: four times the triangle's and its own, 0 to 2.
using CornerNumber = std::uint64_t;
constexpr CornerNumber kNoCorner = ~CornerNumber{0};
constexpr std::size_t TriangleOf(CornerNumber corner) { return corner / 4; }

// The faces around one point, component by component, so that four are looked at together.
class FacesAround {
 public:
  std::size_t Count() const { return count_; }
  bool IsFull() const { return count_ == kMostFacesCompared; }
  CornerNumber Corner(std::size_t i) const { return corners_[i]; }
  void Clear() { count_ = 0; }

  void Add(CornerNumber corner, const Face& face) {
    const Vec unit = face.Unit();
    corners_[count_] = corner;
    unitX_[count_] = unit.x;
    unitY_[count_] = unit.y;
    unitZ_[count_] = unit.z;
    normalX_[count_] = face.normal.x;
    normalY_[count_] = face.normal.y;
    normalZ_[count_] = face.normal.z;
    ++count_;
  }

  Vec Unit(std::size_t i) const { return {unitX_[i], unitY_[i], unitZ_[i]}; }

  // For four faces from the first on: the sum of all that are smooth with each, in their order,
  // with length 1; the face's own direction where that is none.
  FourVecs SmoothNormals(std::size_t first) const {
    const FourVecs own{FourAt(unitX_, first), FourAt(unitY_, first), FourAt(unitZ_, first)};
    FourVecs sum{};
    for (std::size_t i = count_; i-- > 0;) {
      const FourWhole isSmooth = own.Dot(Unit(i)) > kSmoothCosine;
      sum.x += Where(isSmooth, normalX_[i]);
      sum.y += Where(isSmooth, normalY_[i]);
      sum.z += Where(isSmooth, normalZ_[i]);
    }
    const Four scale = 1 / Root(Squares(sum));
    const FourVecs normal{sum.x * scale, sum.y * scale, sum.z * scale};
    const FourWhole isUsable = Squares(normal) > 0.5F;
    return {isUsable ? normal.x : own.x, isUsable ? normal.y : own.y, isUsable ? normal.z : own.z};
  }

 private:
  using Components = std::array<float, kMostFacesCompared>;

  static Four FourAt(const Components& from, std::size_t first) {
    return Four{from[first], from[first + 1], from[first + 2], from[first + 3]};
  }
  static Four Squares(const FourVecs& v) { return v.x * v.x + v.y * v.y + v.z * v.z; }
  static Four Where(FourWhole mask, float number) {
    return std::bit_cast<Four>(mask &
                               std::bit_cast<FourWhole>(Four{number, number, number, number}));
  }

  std::array<CornerNumber, kMostFacesCompared> corners_{};
  Components unitX_{}, unitY_{}, unitZ_{}, normalX_{}, normalY_{}, normalZ_{};
  std::size_t count_ = 0;
};

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
    geometry_.normals.resize(geometry_.triangles.size());
    for (std::size_t p = 0; p < geometry_.points.size(); ++p) {
      if (lasts_[p] != kNoCorner) geometry_.bounds.Add(geometry_.points[p]);
    }
    if (!allUsable_) MakeSafePoints();
    if (mesh_.uvs.size() == mesh_.polygons.size() * 4) CopyCorners(mesh_.uvs, 0, geometry_.uvs);
    if (mesh_.colors.size() == mesh_.polygons.size() * 4)
      CopyCorners(mesh_.colors, 1, geometry_.colors);
    mesh_.normals.size() == mesh_.polygons.size() * 4 ? CopyNormals() : SmoothNormals();
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
    geometry_.normals.resize(triangles);
    hasCorners_ = !mesh_.uvs.empty() || !mesh_.colors.empty() || !mesh_.normals.empty();
    if (hasCorners_) sources_.reserve(triangles);
    faces_.reserve(triangles);
    lasts_.assign(geometry_.points.size(), kNoCorner);
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
    const CornerNumber first = geometry_.triangles.size() * 4;
    for (std::size_t c = 0; c < 3; ++c)
      PutBefore(first + c, std::exchange(lasts_[corners[c]], first + c));
    geometry_.triangles.push_back(corners);
    if (hasCorners_) sources_.push_back(source);
    faces_.push_back({normal, 1 / size});
  }

  void Drop() { ++geometry_.dropped; }

  Vec& NormalAt(CornerNumber corner) { return geometry_.normals[TriangleOf(corner)][corner % 4]; }

  // The corners at one point, from the last one on: each has the one before it where its normal
  // will be.
  void PutBefore(CornerNumber corner, CornerNumber before) {
    std::memcpy(static_cast<void*>(&NormalAt(corner)), &before, sizeof before);
  }
  CornerNumber Before(CornerNumber corner) {
    CornerNumber before = 0;
    std::memcpy(&before, &NormalAt(corner), sizeof before);
    return before;
  }

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
    for (std::size_t i = 0; i < sources_.size(); ++i) {
      for (std::size_t c = 0; c < 3; ++c) {
        const auto& n = mesh_.normals[sources_[i].polygon * 4 + sources_[i].corners[c]];
        const Vec normal = Normalized({n[0], n[1], n[2]});
        const bool usable = IsFinite(normal) && Dot(normal, normal) > 0.5F;
        geometry_.normals[i][c] = usable ? normal : faces_[i].Unit();
      }
    }
  }

  void SmoothNormals() {
    for (const CornerNumber last : lasts_) {
      around_.Clear();
      CornerNumber corner = last;
      for (; corner != kNoCorner && !around_.IsFull(); corner = Before(corner))
        around_.Add(corner, faces_[TriangleOf(corner)]);
      corner == kNoCorner ? SmoothAround() : SmoothAll(last);
    }
  }

  void SmoothAround() {
    for (std::size_t first = 0; first < around_.Count(); first += 4) {
      const FourVecs normals = around_.SmoothNormals(first);
      const std::size_t end = std::min<std::size_t>(4, around_.Count() - first);
      for (std::size_t i = 0; i < end; ++i)
        NormalAt(around_.Corner(first + i)) = {normals.x[i], normals.y[i], normals.z[i]};
    }
  }

  // One normal for all of the corners around a point.
  void SmoothAll(CornerNumber last) {
    CornerNumber first = kNoCorner;
    while (last != kNoCorner) {
      const CornerNumber before = Before(last);
      PutBefore(last, std::exchange(first, last));
      last = before;
    }
    Vec sum;
    for (CornerNumber corner = first; corner != kNoCorner; corner = Before(corner))
      sum += faces_[TriangleOf(corner)].normal;
    const Vec normal = Normalized(sum);
    const bool isUsable = IsFinite(normal) && Dot(normal, normal) > 0.5F;
    while (first != kNoCorner) {
      const CornerNumber next = Before(first);
      NormalAt(first) = isUsable ? normal : faces_[TriangleOf(first)].Unit();
      first = next;
    }
  }

  const Mesh& mesh_;
  Geometry& geometry_;
  PagedVector<Source> sources_;
  PagedVector<Face> faces_;          // by triangle
  PagedVector<CornerNumber> lasts_;  // by point: the last corner there
  FacesAround around_;
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
