// glTF 2.0, section 3.7.2.
#include "engine/import/GltfPrimitive.h"

#include <numeric>

namespace engine {

GltfPrimitive::GltfPrimitive(GltfFile& file, const Json& source, Notes& notes)
    : file_(file),
      source_(source),
      notes_(notes),
      packing_(Extension(source, "KHR_draco_mesh_compression")),
      mode_(Index(source, "mode", kTriangles)) {
  if (mode_ > kFan)
    throw UnreadableFile("a mesh is of the mode " + std::to_string(mode_) +
                         ", which is not known.");
  if (mode_ < kTriangles) return;
  if (!packing_.is_null())
    unpacked_ = std::make_unique<DracoMesh>(file.View(Index(packing_, "bufferView", 0)));
  const std::optional<GltfNumbers> positions = Numbers("POSITION");
  if (positions && positions->components != 3)
    throw UnreadableFile("the points of a mesh have " + std::to_string(positions->components) +
                         " numbers each.");
  points_ = positions ? positions->count : 0;
}

std::optional<GltfNumbers> GltfPrimitive::Numbers(const std::string& name) {
  const std::size_t accessor = Index(Object(source_, "attributes"), name.c_str());
  if (accessor == kNowhere) return std::nullopt;
  const std::size_t packed = Index(Object(packing_, "attributes"), name.c_str());
  if (!unpacked_ || packed == kNowhere) return FindNumbers(file_, accessor);
  GltfNumbers numbers = DescribeNumbers(file_, accessor);
  unpacked_->Fill(packed, numbers);
  return numbers;
}

std::optional<GltfNumbers> GltfPrimitive::Fitting(GltfNumbers numbers, unsigned width) {
  if (numbers.count >= points_ && numbers.components >= width) return numbers;
  notes_.Count("Normals, texture coordinates or weights that do not fit their points are left out");
  return std::nullopt;
}

std::optional<GltfNumbers> GltfPrimitive::Attribute(const std::string& name, unsigned width) {
  std::optional<GltfNumbers> numbers = Numbers(name);
  return numbers ? Fitting(std::move(*numbers), width) : std::nullopt;
}

std::optional<GltfNumbers> GltfPrimitive::Attribute(const Json& target, const char* name,
                                                    unsigned width) {
  const std::size_t accessor = Index(target, name);
  return accessor == kNowhere ? std::nullopt : Fitting(FindNumbers(file_, accessor), width);
}

std::vector<std::uint32_t> GltfPrimitive::Indices() {
  const std::size_t accessor = Index(source_, "indices");
  std::vector<std::uint32_t> indices;
  if (accessor == kNowhere) {
    indices.resize(points_);
    std::iota(indices.begin(), indices.end(), 0U);
    return indices;
  }
  const GltfNumbers numbers = FindNumbers(file_, accessor);
  indices.resize(numbers.count);
  ReadWholes(numbers, 0, numbers.count, 1, indices.data());
  return indices;
}

std::vector<std::uint32_t> GltfPrimitive::Corners() {
  if (unpacked_) return unpacked_->Corners();
  std::vector<std::uint32_t> indices = Indices();
  const std::size_t count = indices.size();
  if (mode_ == kTriangles) {
    notes_.Count("Corners that make no triangle are left out", count % 3);
    indices.resize(count - count % 3);
    return indices;
  }
  std::vector<std::uint32_t> corners;
  corners.reserve(count > 2 ? 3 * (count - 2) : 0);
  for (std::size_t i = 0; i + 2 < count; ++i) {
    const bool isFan = mode_ == kFan;
    // Every other triangle of a strip runs the other way round.
    const std::size_t turned = isFan ? 0 : i % 2;
    corners.push_back(indices[isFan ? 0 : i]);
    corners.push_back(indices[i + 1 + turned]);
    corners.push_back(indices[i + 2 - turned]);
  }
  return corners;
}

}  // namespace engine
