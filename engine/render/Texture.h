// Texture: a picture made ready to color surfaces: a pyramid of ever smaller copies, so that far
// surfaces do not flicker. Never changes once made. TextureFile: an image file as it was read and,
// from the first use on, the texture in it; whoever read it shares it with the pictures that show
// it. Any thread, several at a time.
#pragma once

#include <array>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "engine/render/Image.h"
#include "engine/render/Vec.h"
#include "engine/scene/PictureParameters.h"

namespace engine {

struct Texel {
  Vec color;  // linear
  float alpha = 1;
};

// What lies beyond the edges of a picture.
struct Wraps {
  TextureWrap u = TextureWrap::Repeat;
  TextureWrap v = TextureWrap::Repeat;

  bool operator==(const Wraps&) const = default;
};

class Texture {
 public:
  // Larger pictures are halved until they fit into this side length.
  static constexpr std::uint32_t kLargestSide = 4096;

  // Takes the picture; one of no pixels is not allowed.
  explicit Texture(Image image);

  // The color at u, v; v grows downwards. `detail` is the side of the seen area in units of u and
  // v: 0 shows every pixel. `isColor` false takes the bytes as plain numbers (normal maps).
  Texel Sample(float u, float v, float detail, bool isColor = true, Wraps wraps = {}) const;

  std::size_t Bytes() const;

 private:
  static Texel SampleLevel(const Image& level, float u, float v, bool isColor, Wraps wraps);
  std::vector<Image> levels_;  // full size first
};

class TextureFile {
 public:
  explicit TextureFile(std::shared_ptr<const std::string> bytes) : bytes_(std::move(bytes)) {}
  // A file that could not be read.
  explicit TextureFile(const Status& problem) : problem_(problem.Message()) {}

  // Null, with the reason in `*problem`, when there is no texture. `*decoded` tells whether it was
  // made by this very call.
  std::shared_ptr<const Texture> Get(std::string* problem, bool* decoded);
  // Memory of the texture, 0 before it is made.
  std::size_t Bytes() const;
  // Whether there is a texture that nobody uses.
  bool IsIdle() const;

 private:
  mutable std::mutex lock_;
  std::shared_ptr<const std::string> bytes_;  // null once decoded
  std::shared_ptr<const Texture> texture_;
  std::string problem_;
};

}  // namespace engine
