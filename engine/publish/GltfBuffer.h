// GltfBuffer: the binary part of a glTF file and what tells of it: buffer views and accessors (glTF
// 2.0, sections 3.6 and 4.4). Geometry that several meshes use stands in it once. Plain data.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <unordered_map>

#include "engine/core/Result.h"
#include "engine/publish/GltfGeometry.h"

namespace engine {

class GltfBuffer {
 public:
  using Json = nlohmann::ordered_json;

  // "attributes" and "indices" of a primitive with that geometry; `mesh` is what it is known by.
  // Tangents are for materials with a normal map.
  Json PrimitiveOf(const Mesh* mesh, const GltfGeometry& geometry, bool withTangents);
  // The index of a buffer view with these bytes.
  std::size_t AddBytes(std::string_view bytes);
  // The whole file: `head` with the members for the buffer put in, and the bytes. Fails where it is
  // larger than the format can hold.
  Result<std::string> AsBinary(Json head);

 private:
  Json MakePrimitive(const GltfGeometry& geometry);
  std::size_t AddView(std::string_view bytes, int target);
  std::size_t AddAccessor(std::string_view bytes, int target, int component, std::size_t count,
                          const char* type);

  std::string bytes_;
  Json views_ = Json::array();
  Json accessors_ = Json::array();
  std::unordered_map<const Mesh*, Json> primitives_;
  std::unordered_map<const Mesh*, std::size_t> tangents_;  // accessors
};

}  // namespace engine
