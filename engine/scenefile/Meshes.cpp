#include "engine/scenefile/Meshes.h"

#include <xxhash.h>

#include <algorithm>
#include <bit>
#include <map>

#include "engine/scenefile/Columns.h"

namespace engine {
namespace {

constexpr std::size_t kCorners = 4;

// Why a reader would refuse the mesh, null where it would not. Asked by writer and reader alike:
// better no file than one that nobody can open again.
const char* FaultOf(const Mesh& mesh) {
  const auto points = static_cast<std::int64_t>(mesh.points.size());
  for (const Mesh::Polygon& polygon : mesh.polygons) {
    for (std::size_t corner = 0; corner < kCorners; ++corner)
      if (polygon[corner] < (corner == 3 ? -1 : 0) || polygon[corner] >= points)
        return "a polygon names a point that there is not";
  }
  const std::size_t corners = mesh.polygons.size() * kCorners;
  if (!mesh.normals.empty() && mesh.normals.size() != corners)
    return "there is not one normal per corner";
  if (!mesh.uvs.empty() && mesh.uvs.size() != corners)
    return "there is not one texture coordinate per corner";
  if (!mesh.colors.empty() && mesh.colors.size() != corners)
    return "there is not one color per corner";
  return nullptr;
}

template <std::size_t N>
void PutFloats(std::string& out, const std::vector<std::array<float, N>>& rows) {
  std::vector<std::uint32_t> plane(rows.size());
  for (std::size_t i = 0; i < N; ++i) {
    std::ranges::transform(rows, plane.begin(),
                           [&](const auto& row) { return std::bit_cast<std::uint32_t>(row[i]); });
    PutPlanes(out, plane);
  }
}

template <std::size_t N>
std::vector<std::array<float, N>> TakeFloats(Cursor& in, std::uint64_t rows) {
  if (rows > in.Left() / (N * sizeof(float)))
    in.Refuse("it names " + Grouped(rows) + " rows, more than its bytes can hold");
  in.Memory().Charge(rows, N * sizeof(float));
  std::vector<std::array<float, N>> result(static_cast<std::size_t>(rows));
  for (std::size_t i = 0; i < N; ++i) {
    const std::vector<std::uint32_t> plane = TakePlanes(in, result.size());
    for (std::size_t row = 0; row < result.size(); ++row)
      result[row][i] = std::bit_cast<float>(plane[row]);
  }
  return result;
}

void PutMesh(std::string& out, const Mesh& mesh) {
  PutVarint(out, mesh.points.size());
  PutVarint(out, mesh.polygons.size());
  out.push_back(!mesh.normals.empty());
  out.push_back(!mesh.uvs.empty());
  PutFloats(out, mesh.points);
  ColumnValues column(mesh.polygons.size());
  for (std::size_t corner = 0; corner < kCorners; ++corner) {
    std::ranges::transform(mesh.polygons, column.begin(), [&](const Mesh::Polygon& polygon) {
      return static_cast<std::uint64_t>(static_cast<std::int64_t>(polygon[corner]));
    });
    PutInts(out, column);
  }
  PutFloats(out, mesh.normals);
  PutFloats(out, mesh.uvs);
}

void TakePolygons(Cursor& in, Mesh& mesh, std::size_t rows) {
  in.CheckRows(rows);
  in.Memory().Charge(rows, sizeof(Mesh::Polygon));
  mesh.polygons.resize(rows);
  for (std::size_t corner = 0; corner < kCorners; ++corner) {
    const ColumnValues column = TakeInts(in, rows);
    CheckLongs(in, column, "a corner");
    for (std::size_t row = 0; row < rows; ++row)
      mesh.polygons[row][corner] = static_cast<std::int32_t>(column[row]);
  }
}

std::shared_ptr<Mesh> TakeMesh(Cursor& in) {
  auto mesh = std::make_shared<Mesh>();
  const std::uint64_t points = in.Varint();
  const std::uint64_t polygons = in.Varint();
  const bool hasNormals = in.Below(2, "a switch") != 0;
  const bool hasUvs = in.Below(2, "a switch") != 0;
  mesh->points = TakeFloats<3>(in, points);
  TakePolygons(in, *mesh, static_cast<std::size_t>(polygons));
  if (hasNormals) mesh->normals = TakeFloats<3>(in, polygons * kCorners);
  if (hasUvs) mesh->uvs = TakeFloats<2>(in, polygons * kCorners);
  if (const char* fault = FaultOf(*mesh)) in.Refuse(fault);
  return mesh;
}

// Identifies a mesh in section COLORS: the sum of the mesh's bytes, and which of the meshes with
// that sum it is. So colors find their mesh again in a file written by a program that keeps them
// without knowing them.
struct MeshTag {
  std::uint64_t sum;
  std::uint64_t number;

  auto operator<=>(const MeshTag&) const = default;
};

class MeshTags {
 public:
  MeshTag Next(std::string_view bytes) {
    const std::uint64_t sum = XXH3_64bits(bytes.data(), bytes.size());
    return {sum, seen_[sum]++};
  }

 private:
  std::unordered_map<std::uint64_t, std::uint64_t> seen_;
};

}  // namespace

std::uint64_t MeshWriter::Row(const std::shared_ptr<const Mesh>& mesh) {
  if (!mesh) return 0;
  const auto [row, isNew] = rows_.try_emplace(mesh.get(), meshes_.size() + 1);
  if (!isNew) return row->second;
  if (const char* fault = FaultOf(*mesh))
    throw Damage{std::string("The scene holds a broken mesh: ") + fault + "."};
  meshes_.push_back(mesh);
  hasColors_ = hasColors_ || !mesh->colors.empty();
  return row->second;
}

std::uint64_t MeshWriter::MemoryToRead() const {
  std::uint64_t bytes = 0;
  for (const auto& mesh : meshes_)
    bytes += 2 * sizeof(Mesh) + mesh->points.size() * 48 + mesh->polygons.size() * 128 +
             mesh->normals.size() * 48 + mesh->uvs.size() * 32 + mesh->colors.size() * 64;
  return bytes;
}

MeshWriter::Sections MeshWriter::Contents() const {
  Sections out;
  std::string rows;
  MeshTags tags;
  std::uint64_t colored = 0;
  PutVarint(out.meshes, meshes_.size());
  for (const auto& mesh : meshes_) {
    const std::size_t start = out.meshes.size();
    PutMesh(out.meshes, *mesh);
    if (!hasColors_) continue;
    // Meshes without colors are counted, too: the number is that among all with these bytes.
    const MeshTag tag = tags.Next(std::string_view(out.meshes).substr(start));
    if (mesh->colors.empty()) continue;
    PutFixed64(rows, tag.sum);
    PutVarint(rows, tag.number);
    PutVarint(rows, mesh->polygons.size());
    PutFloats(rows, mesh->colors);
    ++colored;
  }
  if (hasColors_) {
    PutVarint(out.colors, colored);
    out.colors += rows;
  }
  return out;
}

namespace {

using ColorTable = std::map<MeshTag, std::vector<std::array<float, 4>>>;

ColorTable ReadColors(std::string_view contents, Budget& budget) {
  Cursor in(contents, "COLORS", budget);
  ColorTable table;
  const std::size_t rows = in.Rows(sizeof(ColorTable::value_type));
  for (std::size_t row = 0; row < rows; ++row) {
    const std::uint64_t sum = in.Fixed64();
    const MeshTag tag{sum, in.Varint()};
    const std::uint64_t polygons = in.Varint();
    in.CheckRows(polygons);
    if (!table.try_emplace(tag, TakeFloats<4>(in, polygons * kCorners)).second)
      in.Refuse("a mesh has colors twice");
  }
  in.End();
  return table;
}

}  // namespace

std::vector<std::shared_ptr<const Mesh>> ReadMeshes(std::string_view contents,
                                                    const std::string* colors, Budget& budget) {
  ColorTable table = colors ? ReadColors(*colors, budget) : ColorTable();
  Cursor in(contents, "MESHES", budget);
  const std::size_t rows = in.Rows(sizeof(Mesh));
  std::vector<std::shared_ptr<const Mesh>> meshes;
  MeshTags tags;
  for (std::size_t row = 0; row < rows; ++row) {
    const std::size_t left = in.Left();
    const std::shared_ptr<Mesh> mesh = TakeMesh(in);
    meshes.push_back(mesh);
    if (table.empty()) continue;
    const auto found =
        table.find(tags.Next(contents.substr(contents.size() - left, left - in.Left())));
    // Colors whose mesh is gone are left over and forgotten.
    if (found == table.end()) continue;
    mesh->colors = std::move(found->second);
    if (const char* fault = FaultOf(*mesh)) in.Refuse(fault);
  }
  in.End();
  return meshes;
}

}  // namespace engine
