// Texture: a picture made ready to color surfaces: a pyramid of ever smaller copies, so that far
// surfaces do not flicker. Never changes once made. TextureFile: an image file as it was read and,
// from the first use on, the texture in it; whoever read it shares it with the pictures that show
// it. Any thread, several at a time.
#pragma once

#include <array>
#include <compare>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "engine/render/Four.h"
#include "engine/render/Image.h"
#include "engine/render/Vec.h"
#include "engine/scene/PictureParameters.h"

namespace engine {

struct Texel {
  Vec color;  // linear
  float alpha = 1;
};

// How a picture is looked up: what lies beyond its edges, and whether its pixels are squares of one
// color where they are seen from near.
struct Sampling {
  TextureWrap u = TextureWrap::Repeat;
  TextureWrap v = TextureWrap::Repeat;
  bool isSharp = false;

  auto operator<=>(const Sampling&) const = default;
};

class Texture {
 public:
  // Larger pictures are halved until they fit into this side length.
  static constexpr std::uint32_t kLargestSide = 4096;

  // Takes the picture; one of no pixels is not allowed.
  explicit Texture(Image image);

  // A place in textures of one size, with the pixels around it.
  struct Spot {
    bool isSomewhere = false;
    std::size_t level = 0;
    float coarser = 0;  // share of the level after it, 0 where that is not needed
    // Of the level in u and v, and of the one after it
    FourWhole first{};
    FourWhole second{};
    Four share{};  // how far from the first pixel to the second one
  };

  // The place at u, v; v grows downwards. `detail` is the side of the seen area in units of u and
  // v: 0 shows every pixel. It is the same in every texture that IsLike this one.
  Spot SpotAt(float u, float v, float detail, const Sampling& sampling = {}) const;
  bool IsLike(const Texture& other) const;
  // The color there, black where u or v was no number.
  Texel ColorAt(const Spot& spot) const;
  // ColorAt with the bytes taken as plain numbers (normal maps).
  Texel NumbersAt(const Spot& spot) const;

  std::size_t Bytes() const;

 private:
  Texel At(const Spot& spot, const std::array<float, 256>& of) const;
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
