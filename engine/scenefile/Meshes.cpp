#include "engine/scenefile/Meshes.h"

#include <algorithm>
#include <bit>

#include "engine/scenefile/Columns.h"

namespace engine {
namespace {

constexpr std::size_t kCorners = 4;

// Why a reader would refuse the mesh, null where it would not.
const char* FaultOf(const Mesh& mesh) {
  const auto points = static_cast<std::int64_t>(mesh.points.size());
  for (const Mesh::Polygon& polygon : mesh.polygons)
    for (std::size_t corner = 0; corner < kCorners; ++corner)
      if (polygon[corner] < (corner == 3 ? -1 : 0) || polygon[corner] >= points)
        return "a polygon names a point that there is not";
  const std::size_t corners = mesh.polygons.size() * kCorners;
  if (!mesh.normals.empty() && mesh.normals.size() != corners)
    return "there is not one normal per corner";
  if (!mesh.uvs.empty() && mesh.uvs.size() != corners)
    return "there is not one texture coordinate per corner";
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

std::shared_ptr<const Mesh> TakeMesh(Cursor& in) {
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

}  // namespace

std::uint64_t MeshWriter::Row(const std::shared_ptr<const Mesh>& mesh) {
  if (!mesh) return 0;
  const auto [row, isNew] = rows_.try_emplace(mesh.get(), meshes_.size() + 1);
  if (!isNew) return row->second;
  if (const char* fault = FaultOf(*mesh))
    throw Damage{std::string("The scene holds a broken mesh: ") + fault + "."};
  meshes_.push_back(mesh);
  return row->second;
}

std::string MeshWriter::Contents() const {
  std::string out;
  PutVarint(out, meshes_.size());
  for (const auto& mesh : meshes_) PutMesh(out, *mesh);
  return out;
}

std::vector<std::shared_ptr<const Mesh>> ReadMeshes(std::string_view contents, Budget& budget) {
  Cursor in(contents, "MESHES", budget);
  const std::size_t rows = in.Rows(sizeof(Mesh));
  std::vector<std::shared_ptr<const Mesh>> meshes;
  for (std::size_t row = 0; row < rows; ++row) meshes.push_back(TakeMesh(in));
  in.End();
  return meshes;
}

}  // namespace engine
