#include "engine/import/GltfDraco.h"

#include <draco/compression/decode.h>

#include <limits>

namespace engine {
namespace {

template <class T>
std::string ValuesOf(const draco::PointAttribute& attribute, std::size_t points, unsigned width) {
  std::string bytes(points * width * sizeof(T), '\0');
  T* out = reinterpret_cast<T*>(bytes.data());
  for (std::size_t i = 0; i < points; ++i, out += width) {
    const draco::PointIndex point(static_cast<std::uint32_t>(i));
    if (!attribute.ConvertValue<T>(attribute.mapped_index(point), static_cast<std::int8_t>(width),
                                   out))
      throw UnreadableFile("a packed mesh has values of a kind that is not known.");
  }
  return bytes;
}

std::string ValuesOf(const draco::PointAttribute& attribute, std::size_t points, unsigned width,
                     GltfKind kind) {
  switch (kind) {
    case GltfKind::Byte:
      return ValuesOf<std::int8_t>(attribute, points, width);
    case GltfKind::UnsignedByte:
      return ValuesOf<std::uint8_t>(attribute, points, width);
    case GltfKind::Short:
      return ValuesOf<std::int16_t>(attribute, points, width);
    case GltfKind::UnsignedShort:
      return ValuesOf<std::uint16_t>(attribute, points, width);
    case GltfKind::UnsignedInt:
      return ValuesOf<std::uint32_t>(attribute, points, width);
    case GltfKind::Float:
      break;
  }
  return ValuesOf<float>(attribute, points, width);
}

}  // namespace

DracoMesh::DracoMesh(std::string_view packed) {
  draco::DecoderBuffer buffer;
  buffer.Init(packed.data(), packed.size());
  auto mesh = draco::Decoder().DecodeMeshFromBuffer(&buffer);
  if (!mesh.ok())
    throw UnreadableFile("a packed mesh cannot be unpacked: " + mesh.status().error_msg_string());
  mesh_ = std::move(mesh).value();
}

DracoMesh::~DracoMesh() = default;

std::vector<std::uint32_t> DracoMesh::Corners() const {
  std::vector<std::uint32_t> corners;
  corners.reserve(std::size_t{3} * mesh_->num_faces());
  for (std::uint32_t i = 0; i < mesh_->num_faces(); ++i) {
    for (const draco::PointIndex& point : mesh_->face(draco::FaceIndex(i)))
      corners.push_back(point.value());
  }
  return corners;
}

void DracoMesh::Fill(std::size_t attribute, GltfNumbers& numbers) {
  const draco::PointAttribute* found =
      attribute < std::numeric_limits<std::uint32_t>::max()
          ? mesh_->GetAttributeByUniqueId(static_cast<std::uint32_t>(attribute))
          : nullptr;
  if (found == nullptr) throw UnreadableFile("a packed mesh lacks one of its attributes.");
  numbers.count = mesh_->num_points();
  numbers.stride = numbers.components * BytesOf(numbers.kind);
  // Each in a block of its own, which stays where it is while further ones are added.
  values_.push_back(std::make_unique<std::string>(
      ValuesOf(*found, numbers.count, numbers.components, numbers.kind)));
  numbers.bytes = *values_.back();
}

}  // namespace engine
