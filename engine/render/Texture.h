// Texture: a picture made ready to color surfaces: a pyramid of ever smaller copies, so that far
// surfaces do not flicker. Never changes once made; any thread.
#pragma once

#include <array>
#include <memory>
#include <vector>

#include "engine/render/Image.h"
#include "engine/render/Vec.h"

namespace engine {

struct Texel {
  Vec color;  // linear
  float alpha = 1;
};

class Texture {
 public:
  // Larger pictures are halved until they fit into this side length.
  static constexpr std::uint32_t kLargestSide = 4096;

  // Takes the picture; one of no pixels is not allowed.
  explicit Texture(Image image);

  // The color at u, v; v grows downwards; the picture repeats in both directions. `detail` is the
  // side of the seen area in units of u and v: 0 shows every pixel. `isColor` false takes the bytes
  // as plain numbers (normal maps).
  Texel Sample(float u, float v, float detail, bool isColor = true) const;

  std::size_t Bytes() const;

 private:
  Texel SampleLevel(const Image& level, float u, float v, bool isColor) const;
  std::vector<Image> levels_;  // full size first
};

}  // namespace engine
