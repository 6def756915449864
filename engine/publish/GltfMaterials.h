// GltfMaterials: the looks of a picture as materials of a glTF file (glTF 2.0, section 3.9), with
// their textures as images in the buffer. A material is written when the first object uses it.
// Refers to what it was given. Main thread.
#pragma once

#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "engine/outside/FileSystem.h"
#include "engine/publish/GltfBuffer.h"
#include "engine/render/ScenePicture.h"

namespace engine {

class GltfMaterials {
 public:
  using Json = nlohmann::ordered_json;
  GltfMaterials(const host::BaseDocument& doc, FileSystem& files, const ScenePicture& picture,
                GltfBuffer& buffer);

  // Index of the material of an object: its look, and where its texture tag moves and repeats it.
  std::size_t IndexOf(const Instance& instance);

  bool HasNormalMap(std::size_t material) const {
    return materials_[material].contains("normalTexture");
  }

  const Json& Materials() const { return materials_; }
  const Json& Textures() const { return textures_; }
  const Json& Images() const { return images_; }
  const std::set<std::string>& Extensions() const { return extensions_; }
  std::vector<std::string> TakeNotes() { return std::move(notes_); }

 private:
  Json Make(const Instance& instance);
  // Puts a texture into `material` where the look has one.
  void AddTexture(const Instance& instance, std::shared_ptr<const Texture> SurfaceLook::*place,
                  Json& material, const char* key);
  // The index of the texture in a file, nothing where it cannot be had.
  std::optional<std::size_t> TextureOf(const std::string& name);
  std::string BytesOf(const std::string& name);

  const host::BaseDocument& doc_;
  FileSystem& files_;
  const ScenePicture& picture_;
  GltfBuffer& buffer_;
  std::map<std::tuple<std::uint32_t, std::array<float, 2>, std::array<float, 2>>, std::size_t>
      indices_;
  std::map<std::string, std::optional<std::size_t>> textureIndices_;  // by the name of the file
  std::set<std::string> extensions_;
  std::vector<std::string> notes_;
  Json materials_ = Json::array();
  Json textures_ = Json::array();
  Json images_ = Json::array();
};

}  // namespace engine
