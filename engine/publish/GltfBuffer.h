// GltfBuffer: the binary part of a glTF file and what tells of it: buffer views and accessors (glTF
// 2.0, sections 3.6 and 4.4). Geometry that several meshes use stands in it once; all positions lie
// in one view, and so on. Refers to the geometry that it was given. Main thread.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "engine/publish/GltfGeometry.h"

namespace engine {

class GltfBuffer {
 public:
  // The members "attributes" and "indices" of a primitive with that geometry, which must live as
  // long as this; `mesh` is what it is known by. Tangents are for materials with a normal map.
  const std::string& PrimitiveOf(const Mesh* mesh, const GltfGeometry& geometry, bool withTangents);
  // A picture's bytes; the index of a buffer view with them, in a file that has its pictures in it.
  std::size_t AddBytes(std::string bytes);
  const std::vector<std::string>& Pictures() const { return pictures_; }

  // How many bytes there are, with the pictures' or without.
  std::uint64_t Size(bool withPictures) const;
  void AppendTo(std::string& bytes, bool withPictures) const;
  // The members "accessors", "bufferViews" and "buffers", each with a comma in front; empty where
  // there are no bytes. `uri`: of the file with the bytes, empty for those behind the JSON text.
  std::string Members(bool withPictures, const std::string& uri) const;

 private:
  enum Kind : std::uint8_t { Indices, ShortIndices, Positions, Normals, Uvs, Tangents, Colors };
  static constexpr std::size_t kKinds = 7;
  using Places = std::array<std::size_t, kKinds>;
  struct Accessor {
    Kind kind;
    const GltfGeometry* geometry;
    std::uint64_t offset;  // in the bytes of its kind
  };
  struct Primitive {
    std::string plain;
    std::string withTangents;
  };

  static const std::string& BytesOf(const GltfGeometry& geometry, Kind kind);
  std::size_t AddAccessor(Kind kind, const GltfGeometry& geometry);
  std::string MakePrimitive(const GltfGeometry& geometry);
  void AppendAccessor(std::string& to, const Accessor& accessor, const Places& places) const;
  // The list without its first bracket, and where in it the view of each kind is.
  std::string Views(bool withPictures, Places& places) const;

  std::vector<std::string> pictures_;
  std::vector<Accessor> accessors_;
  std::array<std::uint64_t, kKinds> sizes_{};
  std::unordered_map<const Mesh*, Primitive> primitives_;
};

}  // namespace engine
