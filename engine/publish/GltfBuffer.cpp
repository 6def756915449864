#include "engine/publish/GltfBuffer.h"

#include <cstdint>
#include <limits>

namespace engine {

namespace {

constexpr int kVertexArray = 34962;
constexpr int kIndexArray = 34963;
constexpr int kFloat = 5126;
constexpr int kUnsigned = 5125;
constexpr std::uint32_t kMagic = 0x46546C67;      // "glTF"
constexpr std::uint32_t kJsonChunk = 0x4E4F534A;  // "JSON"
constexpr std::uint32_t kBytesChunk = 0x004E4942;

void AppendNumber(std::string& to, std::uint64_t number) {
  for (unsigned shift = 0; shift < 32; shift += 8) to += static_cast<char>(number >> shift & 0xFF);
}

void Fill(std::string& text, char with) {
  while (text.size() % 4 != 0) text += with;
}

}  // namespace

std::size_t GltfBuffer::AddView(std::string_view bytes, int target) {
  Fill(bytes_, '\0');
  Json view = {{"buffer", 0}, {"byteOffset", bytes_.size()}, {"byteLength", bytes.size()}};
  if (target != 0) view["target"] = target;
  views_.push_back(std::move(view));
  bytes_.append(bytes);
  return views_.size() - 1;
}

std::size_t GltfBuffer::AddBytes(std::string_view bytes) { return AddView(bytes, 0); }

std::size_t GltfBuffer::AddAccessor(std::string_view bytes, int target, int component,
                                    std::size_t count, const char* type) {
  accessors_.push_back({{"bufferView", AddView(bytes, target)},
                        {"componentType", component},
                        {"count", count},
                        {"type", type}});
  return accessors_.size() - 1;
}

GltfBuffer::Json GltfBuffer::PrimitiveOf(const Mesh* mesh, const GltfGeometry& geometry,
                                         bool withTangents) {
  Json& plain = primitives_[mesh];
  if (plain.is_null()) plain = MakePrimitive(geometry);
  if (!withTangents || geometry.tangents.empty()) return plain;
  Json primitive = plain;
  const auto [place, isNew] = tangents_.try_emplace(mesh);
  if (isNew)
    place->second = AddAccessor(geometry.tangents, kVertexArray, kFloat, geometry.vertices, "VEC4");
  primitive["attributes"]["TANGENT"] = place->second;
  return primitive;
}

GltfBuffer::Json GltfBuffer::MakePrimitive(const GltfGeometry& geometry) {
  Json attributes;
  const auto add = [&](const char* name, const std::string& bytes, const char* type) {
    if (!bytes.empty())
      attributes[name] = AddAccessor(bytes, kVertexArray, kFloat, geometry.vertices, type);
  };
  add("POSITION", geometry.positions, "VEC3");
  accessors_.back()["min"] = geometry.low;
  accessors_.back()["max"] = geometry.high;
  add("NORMAL", geometry.normals, "VEC3");
  add("TEXCOORD_0", geometry.uvs, "VEC2");
  return {{"attributes", attributes},
          {"indices",
           AddAccessor(geometry.indices, kIndexArray, kUnsigned, geometry.corners, "SCALAR")}};
}

Result<std::string> GltfBuffer::AsBinary(Json head) {
  Fill(bytes_, '\0');
  if (!accessors_.empty()) head["accessors"] = std::move(accessors_);
  if (!views_.empty()) {
    head["bufferViews"] = std::move(views_);
    head["buffers"] = Json::array({{{"byteLength", bytes_.size()}}});
  }
  std::string json = head.dump(-1, ' ', false, Json::error_handler_t::replace);
  Fill(json, ' ');
  const std::uint64_t size =
      12 + 8 + json.size() + (bytes_.empty() ? 0 : 8 + std::uint64_t{bytes_.size()});
  if (size > std::numeric_limits<std::uint32_t>::max())
    return Result<std::string>::Failure(
        "The scene is larger than the 4 GiB that a binary glTF file can hold.");
  std::string file;
  file.reserve(size);
  AppendNumber(file, kMagic);
  AppendNumber(file, 2);
  AppendNumber(file, size);
  AppendNumber(file, json.size());
  AppendNumber(file, kJsonChunk);
  file += json;
  if (bytes_.empty()) return file;
  AppendNumber(file, bytes_.size());
  AppendNumber(file, kBytesChunk);
  file += bytes_;
  return file;
}

}  // namespace engine
