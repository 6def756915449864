// GltfMaterials: the looks of a picture as materials of a glTF file (glTF 2.0, section 3.9), with
// their textures as images in the buffer. A material is written when the first object uses it.
// Where the format has one picture for what a look has two of, they become one. Refers to what it
// was given; looks and textures may come to the picture meanwhile. Main thread.
#pragma once

#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <tuple>
#include <unordered_map>
#include <vector>

#include "engine/outside/FileSystem.h"
#include "engine/publish/GltfBuffer.h"
#include "engine/render/Image.h"
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
  const Json& Samplers() const { return samplers_; }
  const std::set<std::string>& Extensions() const { return extensions_; }
  std::vector<std::string> TakeNotes() { return std::move(notes_); }

 private:
  // A picture of the glTF file: the image files it is made of, and how they are combined.
  enum class Blend { Plain, ColorAndOpacity, RoughAndMetal };
  struct Source {
    Blend blend = Blend::Plain;
    std::string first = {};  // names of files; empty: white
    std::string second = {};

    auto operator<=>(const Source&) const = default;
  };

  Json Make(const Instance& instance);
  Json SurfaceOf(const Instance& instance);
  void AddShine(const SurfaceLook& look, Json& material);
  void AddFactor(const char* extension, const char* factor, float value, Json& material);
  // The name of the picture that a look wants there, empty for none.
  std::string NameOf(std::uint32_t look, TextureUse SurfaceLook::*place);
  Source ColorOf(std::uint32_t look);
  Source RoughAndMetalOf(std::uint32_t look);
  // Puts a picture into `material`, where there is one, as it lies on the object.
  void AddTexture(const Instance& instance, const Source& source, const TextureUse& use,
                  Json& material, const char* key);
  void AddTexture(const Instance& instance, TextureUse SurfaceLook::*place, Json& material,
                  const char* key);
  void AddTransform(const Instance& instance, const TextureUse& use, Json& texture);
  std::size_t TextureOf(std::size_t image, const Sampling& sampling);
  // Nothing where it cannot be had.
  std::optional<std::size_t> ImageOf(const Source& source);
  // Bytes of a picture of a kind that the format knows; empty where there are none.
  std::string PictureOf(const Source& source);
  std::string BytesOf(const std::string& name);
  std::optional<Image> PixelsOf(const std::string& name);

  const host::BaseDocument& doc_;
  FileSystem& files_;
  const ScenePicture& picture_;
  GltfBuffer& buffer_;
  std::map<std::tuple<std::uint32_t, std::array<float, 2>, std::array<float, 2>>, std::size_t>
      indices_;
  std::map<Source, std::optional<std::size_t>> imageIndices_;
  std::map<std::pair<std::size_t, Sampling>, std::size_t> textureIndices_;  // by image
  std::map<Sampling, std::size_t> samplerIndices_;
  std::unordered_map<std::uint32_t, std::vector<std::size_t>> wishes_;  // by look
  std::size_t wishesKnown_ = 0;
  std::set<std::string> extensions_;
  std::vector<std::string> notes_;
  Json materials_ = Json::array();
  Json textures_ = Json::array();
  Json images_ = Json::array();
  Json samplers_ = Json::array();
};

}  // namespace engine
