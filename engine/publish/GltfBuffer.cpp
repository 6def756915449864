#include "engine/publish/GltfBuffer.h"

#include "engine/publish/GltfText.h"

namespace engine {

namespace {

constexpr int kVertexArray = 34962;
constexpr int kIndexArray = 34963;
constexpr int kFloat = 5126;
constexpr int kUnsigned = 5125;
constexpr int kUnsignedShort = 5123;

// How the bytes of each kind are read.
struct Layout {
  const char* type;
  int stride;  // bytes for a vertex; 0: no vertices
  int component;
};
constexpr Layout kLayouts[] = {{"SCALAR", 0, kUnsigned}, {"SCALAR", 0, kUnsignedShort},
                               {"VEC3", 12, kFloat},     {"VEC3", 12, kFloat},
                               {"VEC2", 8, kFloat},      {"VEC4", 16, kFloat},
                               {"VEC4", 16, kFloat}};

// Numbers of four bytes begin at a multiple of four in the file (glTF 2.0, section 3.6.2.4).
std::uint64_t Padded(std::uint64_t size) { return (size + 3) / 4 * 4; }

}  // namespace

const std::string& GltfBuffer::BytesOf(const GltfGeometry& geometry, Kind kind) {
  switch (kind) {
    case Positions:
      return geometry.positions;
    case Normals:
      return geometry.normals;
    case Uvs:
      return geometry.uvs;
    case Tangents:
      return geometry.tangents;
    case Colors:
      return geometry.colors;
    default:
      return geometry.indices;
  }
}

std::size_t GltfBuffer::AddBytes(std::string bytes) {
  pictures_.push_back(std::move(bytes));
  return pictures_.size() - 1;
}

std::size_t GltfBuffer::AddAccessor(Kind kind, const GltfGeometry& geometry) {
  accessors_.push_back({kind, &geometry, sizes_[kind]});
  sizes_[kind] += BytesOf(geometry, kind).size();
  return accessors_.size() - 1;
}

// With tangents it refers to the same accessors as without, and to one more.
const std::string& GltfBuffer::PrimitiveOf(const Mesh* mesh, const GltfGeometry& geometry,
                                           bool withTangents) {
  Primitive& primitive = primitives_[mesh];
  if (primitive.plain.empty()) primitive.plain = MakePrimitive(geometry);
  if (!withTangents || geometry.tangents.empty()) return primitive.plain;
  if (primitive.withTangents.empty()) {
    std::string tangents = ",\"TANGENT\":";
    AppendCount(tangents, AddAccessor(Tangents, geometry));
    primitive.withTangents = primitive.plain;
    primitive.withTangents.insert(primitive.plain.find('}'), tangents);
  }
  return primitive.withTangents;
}

std::string GltfBuffer::MakePrimitive(const GltfGeometry& geometry) {
  std::string text = "\"attributes\":{\"POSITION\":";
  AppendCount(text, AddAccessor(Positions, geometry));
  const auto add = [&](Kind kind, const char* name) {
    if (BytesOf(geometry, kind).empty()) return;
    text += name;
    AppendCount(text, AddAccessor(kind, geometry));
  };
  add(Normals, ",\"NORMAL\":");
  add(Uvs, ",\"TEXCOORD_0\":");
  add(Colors, ",\"COLOR_0\":");
  text += "},\"indices\":";
  AppendCount(text, AddAccessor(geometry.hasShortIndices ? ShortIndices : Indices, geometry));
  return text;
}

std::uint64_t GltfBuffer::Size(bool withPictures) const {
  std::uint64_t size = 0;
  for (const std::uint64_t kind : sizes_) size += Padded(kind);
  for (std::size_t i = 0; withPictures && i < pictures_.size(); ++i)
    size += Padded(pictures_[i].size());
  return size;
}

// All of a kind behind one another, in the order of their accessors, which is how AddAccessor has
// counted the offsets.
void GltfBuffer::AppendTo(std::string& bytes, bool withPictures) const {
  const std::size_t begin = bytes.size();
  const auto fill = [&] { bytes.append(-(bytes.size() - begin) % 4, '\0'); };
  for (std::size_t i = 0; withPictures && i < pictures_.size(); ++i) {
    bytes += pictures_[i];
    fill();
  }
  for (std::size_t kind = 0; kind < kKinds; ++kind) {
    for (const Accessor& accessor : accessors_) {
      if (accessor.kind == kind) bytes += BytesOf(*accessor.geometry, accessor.kind);
    }
    fill();
  }
}

void GltfBuffer::AppendAccessor(std::string& to, const Accessor& accessor,
                                const Places& places) const {
  const GltfGeometry& geometry = *accessor.geometry;
  to += "{\"bufferView\":";
  AppendCount(to, places[accessor.kind]);
  to += ",\"byteOffset\":";
  AppendCount(to, accessor.offset);
  to += ",\"componentType\":";
  AppendCount(to, kLayouts[accessor.kind].component);
  to += ",\"count\":";
  AppendCount(to, kLayouts[accessor.kind].stride == 0 ? geometry.corners : geometry.vertices);
  to.append(",\"type\":\"").append(kLayouts[accessor.kind].type).append("\"");
  if (accessor.kind == Positions) {
    AppendNumbers(to, "min", geometry.low);
    AppendNumbers(to, "max", geometry.high);
  }
  to += "},";
}

// Pictures come first: their views have the numbers that AddBytes has given away.
std::string GltfBuffer::Views(bool withPictures, Places& places) const {
  std::string text;
  std::uint64_t offset = 0;
  std::size_t count = 0;
  const auto add = [&](std::uint64_t size) {
    text += "{\"buffer\":0,\"byteOffset\":";
    AppendCount(text, offset);
    text += ",\"byteLength\":";
    AppendCount(text, size);
    offset += Padded(size);
    return count++;
  };
  for (std::size_t i = 0; withPictures && i < pictures_.size(); ++i) {
    add(pictures_[i].size());
    text += "},";
  }
  for (std::size_t kind = 0; kind < kKinds; ++kind) {
    if (sizes_[kind] == 0) continue;
    places[kind] = add(sizes_[kind]);
    const int stride = kLayouts[kind].stride;
    if (stride > 0) text += ",\"byteStride\":" + std::to_string(stride);
    text += ",\"target\":" + std::to_string(stride > 0 ? kVertexArray : kIndexArray) + "},";
  }
  text.back() = ']';
  return text;
}

std::string GltfBuffer::Members(bool withPictures, const std::string& uri) const {
  const std::uint64_t size = Size(withPictures);
  if (size == 0) return "";
  Places places{};
  const std::string views = Views(withPictures, places);
  std::string text;
  if (!accessors_.empty()) {
    text = ",\"accessors\":[";
    for (const Accessor& accessor : accessors_) AppendAccessor(text, accessor, places);
    text.back() = ']';
  }
  text += ",\"bufferViews\":[" + views + ",\"buffers\":[{\"byteLength\":" + std::to_string(size);
  // Without an address the bytes are those behind the text (glTF 2.0, section 4.4.3.3).
  if (!uri.empty()) text += ",\"uri\":" + Quoted(uri);
  return text + "}]";
}

}  // namespace engine
