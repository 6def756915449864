// LookReading: materials as the picture needs them, each read once. Works for one ReadScene and refers to what it was given.
#pragma once

#include <set>
#include <unordered_map>

#include "engine/render/ScenePicture.h"
#include "host/BaseMaterial.h"

namespace engine {

class LookReading {
 public:
  // Puts the look of objects without a material into `picture` and, later, further ones and notes about textures.
  LookReading(const host::BaseDocument& doc, RenderCaches& caches, ScenePicture& picture);

  // Index of the material's look.
  std::uint32_t LookOf(const host::BaseMaterial& material);

 private:
  SurfaceLook Read(const host::BaseContainer& data);
  // The bitmap behind a link to a shader; a plain colour shader goes into `*color` instead.
  std::shared_ptr<const Texture> ReadShader(const host::BaseContainer& data, host::LONG link, Vec* color);
  std::shared_ptr<const Texture> FindTexture(const std::string& name);

  const host::BaseDocument& doc_;
  RenderCaches& caches_;
  ScenePicture& picture_;
  std::unordered_map<const host::BaseMaterial*, std::uint32_t> looks_;
  std::set<std::string> noted_;
};

// Where the file of a texture may lie, in the order of looking: as given, beside the document, in its folder "tex", by its bare
// name in these, then in the global texture paths. Absolute paths only.
std::vector<std::string> TexturePlaces(const std::string& name, const std::string& documentFolder);

}  // namespace engine
