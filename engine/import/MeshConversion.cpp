#include "engine/import/MeshConversion.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace engine {
namespace {

using Point = std::array<float, 3>;

// Numbers beyond that are damage.
constexpr double kLargest = 1e30;

// Joins equal points: a table of positions in `points`, open addressing, at most half full.
class PointTable {
 public:
  PointTable(std::size_t most, std::vector<Point>& points) : points_(points) {
    std::size_t size = 16;
    while (size < 2 * most) size *= 2;
    slots_.assign(size, -1);
  }

  std::int32_t Add(const Point& point) {
    const std::size_t mask = slots_.size() - 1;
    std::size_t at = Hash(point) & mask;
    while (slots_[at] >= 0 && points_[static_cast<std::size_t>(slots_[at])] != point)
      at = (at + 1) & mask;
    if (slots_[at] < 0) {
      slots_[at] = static_cast<std::int32_t>(points_.size());
      points_.push_back(point);
    }
    return slots_[at];
  }

 private:
  static std::size_t Hash(const Point& point) {
    std::uint64_t hash = 0;
    for (const float coordinate : point) {
      std::uint32_t bits;
      std::memcpy(&bits, &coordinate, sizeof(bits));
      hash = (hash ^ bits) * 0x9E3779B97F4A7C15ull;
      hash ^= hash >> 29;
    }
    return static_cast<std::size_t>(hash);
  }

  std::vector<Point>& points_;
  std::vector<std::int32_t> slots_;
};

// Adding zero turns -0 into 0, so that equal places have equal bits.
Point Converted(const aiVector3D& place, double scale, bool& broken) {
  // One bad point must not cost the mesh, nor spread through its bounds.
  const auto coordinate = [&](double value) {
    const bool finite = std::isfinite(value * scale) && std::abs(value * scale) < kLargest;
    broken = broken || !finite;
    return static_cast<float>(finite ? value * scale : 0) + 0.0f;
  };
  return {coordinate(place.x), coordinate(place.y), coordinate(-static_cast<double>(place.z))};
}

bool IsTriangle(const aiFace& face, unsigned points) {
  return face.mNumIndices == 3 && face.mIndices[0] < points && face.mIndices[1] < points &&
         face.mIndices[2] < points;
}

// Mirroring turns corners round; the last two change places to face outwards again. A triangle's
// fourth corner repeats.
constexpr std::array<int, 4> kCornerOrder = {0, 2, 1, 1};

void AddNormals(const aiMesh& source, const aiFace& face, Mesh& mesh) {
  bool ignored = false;
  for (const int corner : kCornerOrder)
    mesh.normals.push_back(Converted(source.mNormals[face.mIndices[corner]], 1, ignored));
}

// Texture coordinates of the scene: v grows downwards and the material's transform is part of them.
std::array<float, 2> ConvertedUv(const aiVector3D& uv, const UvUse& use) {
  const double written = uv.y;
  const double x = use.scale[0] * uv.x + use.offset[0];
  const double y = use.scale[1] * (use.fromTop ? written : 1 - written) + use.offset[1];
  const bool usable = std::abs(x) < kLargest && std::abs(y) < kLargest;
  return usable ? std::array<float, 2>{static_cast<float>(x), static_cast<float>(y)}
                : std::array<float, 2>{0, 0};
}

// False where all are white, which is as good as none.
bool AreSeen(const aiMesh& source, const UvUse& use) {
  if (!use.showsColors || !source.HasVertexColors(0)) return false;
  const aiColor4D* colors = source.mColors[0];
  return std::any_of(colors, colors + source.mNumVertices,
                     [](const aiColor4D& color) { return color != aiColor4D(1, 1, 1, 1); });
}

void AddColors(const aiColor4D* colors, const aiFace& face, Mesh& mesh) {
  for (const int corner : kCornerOrder) {
    const aiColor4D& color = colors[face.mIndices[corner]];
    mesh.colors.push_back({color.r, color.g, color.b, color.a});
  }
}

void AddUvs(const aiVector3D* uvs, const UvUse& use, const aiFace& face, Mesh& mesh) {
  for (const int corner : kCornerOrder)
    mesh.uvs.push_back(ConvertedUv(uvs[face.mIndices[corner]], use));
}

std::vector<std::int32_t> AddPoints(const aiMesh& source, double scale, Mesh& mesh, Notes& notes) {
  std::vector<std::int32_t> places(source.mNumVertices);
  PointTable table(source.mNumVertices, mesh.points);
  std::size_t brokenPoints = 0;
  for (unsigned i = 0; i < source.mNumVertices; ++i) {
    bool broken = false;
    places[i] = table.Add(Converted(source.mVertices[i], scale, broken));
    brokenPoints += broken;
  }
  notes.Count("Points that are no numbers were moved to the origin", brokenPoints);
  return places;
}

void NoteLosses(const aiMesh& source, const UvUse& use, Notes& notes) {
  notes.Count(kVertexColorsLeftOut, !use.showsColors && source.GetNumColorChannels() > 0);
  notes.Count(kSkinsAtRest, source.mNumBones > 0);
  notes.Count("Morph targets are left out", source.mNumAnimMeshes);
}

}  // namespace

bool HasPolygons(const aiMesh& mesh) {
  return mesh.mNumFaces > 0 && (mesh.mPrimitiveTypes & aiPrimitiveType_TRIANGLE) != 0 &&
         mesh.mVertices != nullptr;
}

Mesh ConvertMesh(const aiMesh& source, double scale, const UvUse& use, Notes& notes) {
  Mesh mesh;
  const std::vector<std::int32_t> places = AddPoints(source, scale, mesh, notes);
  const unsigned channel =
      use.channel < AI_MAX_NUMBER_OF_TEXTURECOORDS && source.HasTextureCoords(use.channel)
          ? use.channel
          : 0;
  const aiVector3D* uvs =
      source.HasTextureCoords(channel) ? source.mTextureCoords[channel] : nullptr;
  mesh.polygons.reserve(source.mNumFaces);
  if (source.HasNormals()) mesh.normals.reserve(std::size_t{4} * source.mNumFaces);
  if (uvs != nullptr) mesh.uvs.reserve(std::size_t{4} * source.mNumFaces);
  const bool hasColors = AreSeen(source, use);
  if (hasColors) mesh.colors.reserve(std::size_t{4} * source.mNumFaces);
  for (unsigned i = 0; i < source.mNumFaces; ++i) {
    const aiFace& face = source.mFaces[i];
    if (!IsTriangle(face, source.mNumVertices)) continue;
    mesh.polygons.push_back(
        {places[face.mIndices[0]], places[face.mIndices[2]], places[face.mIndices[1]], -1});
    if (source.HasNormals()) AddNormals(source, face, mesh);
    if (uvs != nullptr) AddUvs(uvs, use, face, mesh);
    if (hasColors) AddColors(source.mColors[0], face, mesh);
  }
  notes.Count("Faces without an area or with missing points are left out",
              source.mNumFaces - mesh.polygons.size());
  NoteLosses(source, use, notes);
  return mesh;
}

}  // namespace engine
