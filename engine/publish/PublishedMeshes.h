// PublishedMeshes: the meshes of a glTF file (glTF 2.0, section 3.7): one for each geometry and the
// materials that it has in the states, which are variants in a file of several states. Refers to
// what it was given. Main thread.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <unordered_map>

#include "engine/publish/VisibleParts.h"

namespace engine {

class PublishedMeshes {
 public:
  PublishedMeshes(const VisibleParts& parts, const GltfMaterials& materials,
                  GltfGeometries& geometries, GltfBuffer& buffer)
      : parts_(parts), materials_(materials), geometries_(geometries), buffer_(buffer) {}

  // The mesh of a part, named as the object is that has it first. Nothing where nothing of it can
  // be seen.
  std::optional<std::size_t> IndexOf(std::size_t part, const host::BaseList2D& object);
  std::size_t TrianglesOf(std::size_t part);

  // Separated by commas; empty without meshes.
  const std::string& Text() const { return text_; }

 private:
  struct Key {
    const Mesh* mesh;
    std::uint32_t material;
    std::string mappings;  // of variants to materials, as text

    bool operator==(const Key&) const = default;
  };
  struct KeyHash {
    std::size_t operator()(const Key& key) const {
      return std::hash<const Mesh*>()(key.mesh) * 31 + key.material +
             std::hash<std::string>()(key.mappings);
    }
  };

  bool WantsTangents(std::size_t part) const;
  std::string MappingsOf(std::size_t part) const;

  const VisibleParts& parts_;
  const GltfMaterials& materials_;
  GltfGeometries& geometries_;
  GltfBuffer& buffer_;
  std::unordered_map<Key, std::size_t, KeyHash> indices_;
  std::string text_;
};

}  // namespace engine
