// LookReading: materials as the picture needs them, each read once. Works for one SceneScan and
// refers to what it was given.
#pragma once

#include <unordered_map>

#include "engine/render/ScenePicture.h"
#include "host/BaseMaterial.h"

namespace engine {

class LookReading {
 public:
  // Puts the look of objects without a material into `picture` and, later, further ones and the
  // textures they want.
  LookReading(const host::BaseDocument& doc, FileSystem& files, RenderCaches& caches,
              ScenePicture& picture);

  // Index of the material's look.
  std::uint32_t LookOf(const host::BaseMaterial& material);

 private:
  SurfaceLook Read(std::uint32_t index, const host::BaseContainer& data);
  // Wants the bitmaps behind the links to shaders for their places in the look; a plain color
  // shader sets a color instead.
  void ReadPictures(std::uint32_t index, const host::BaseContainer& data, SurfaceLook& look);
  void WantPicture(TextureWish wish, const host::BaseContainer& shader);
  void FindFiles(TextureWish& wish);

  const host::BaseDocument& doc_;
  FileSystem& files_;
  RenderCaches& caches_;
  ScenePicture& picture_;
  std::unordered_map<const host::BaseMaterial*, std::uint32_t> looks_;
};

}  // namespace engine
