#include "engine/render/Texture.h"

namespace engine {

namespace {

template <class Number>
void HalveInto(const std::vector<Number>& from, const Image& size, Image& half,
               std::vector<Number>& to) {
  to.resize(half.PixelCount() * 4);
  for (std::size_t y = 0; y < half.height; ++y) {
    const std::size_t y0 = std::min<std::size_t>(y * 2, size.height - 1);
    const std::size_t y1 = std::min<std::size_t>(y * 2 + 1, size.height - 1);
    for (std::size_t x = 0; x < half.width; ++x) {
      const std::size_t x0 = std::min<std::size_t>(x * 2, size.width - 1);
      const std::size_t x1 = std::min<std::size_t>(x * 2 + 1, size.width - 1);
      for (std::size_t c = 0; c < 4; ++c) {
        const auto at = [&](std::size_t px, std::size_t py) {
          return static_cast<float>(from[(py * size.width + px) * 4 + c]);
        };
        const float sum = at(x0, y0) + at(x1, y0) + at(x0, y1) + at(x1, y1);
        to[(y * half.width + x) * 4 + c] = static_cast<Number>(sum * 0.25F);
      }
    }
  }
}

Image Halved(const Image& image) {
  Image half{std::max(1U, image.width / 2), std::max(1U, image.height / 2), {}, {}};
  if (image.IsFloat()) {
    HalveInto(image.floats, image, half, half.floats);
  } else {
    HalveInto(image.bytes, image, half, half.bytes);
  }
  return half;
}

Texel PixelAt(const Image& image, std::size_t x, std::size_t y, bool isColor) {
  const std::size_t at = (y * image.width + x) * 4;
  if (image.IsFloat()) {
    const float* p = &image.floats[at];
    return {{p[0], p[1], p[2]}, p[3]};
  }
  const std::uint8_t* p = &image.bytes[at];
  const float alpha = static_cast<float>(p[3]) / 255;
  if (isColor) return {{SrgbToLinear(p[0]), SrgbToLinear(p[1]), SrgbToLinear(p[2])}, alpha};
  return {Vec{static_cast<float>(p[0]), static_cast<float>(p[1]), static_cast<float>(p[2])} *
              (1.0F / 255),
          alpha};
}

// The pixel column or row of a coordinate, the next one after it, and how far between them it lies.
struct Place {
  std::size_t first;
  std::size_t second;
  float share;
};

// Within the picture, and never over its edge.
Place PlaceWithin(float coordinate, std::uint32_t size) {
  const float last = static_cast<float>(size) - 1;
  const float pixel = std::clamp(coordinate * static_cast<float>(size) - 0.5F, 0.0F, last);
  const auto first = static_cast<std::size_t>(pixel);
  return {first, std::min<std::size_t>(first + 1, size - 1), pixel - std::floor(pixel)};
}

Place PlaceOf(float coordinate, std::uint32_t size, TextureWrap wrap) {
  if (wrap == TextureWrap::Clamp) return PlaceWithin(std::clamp(coordinate, 0.0F, 1.0F), size);
  if (wrap == TextureWrap::Mirror) {
    const float pair = coordinate * 0.5F;
    return PlaceWithin(1 - std::abs(1 - 2 * (pair - std::floor(pair))), size);
  }
  const float inside = coordinate - std::floor(coordinate);
  const float pixel = inside * static_cast<float>(size) - 0.5F;
  const float below = std::floor(pixel);
  const auto first = static_cast<std::size_t>(below < 0 ? static_cast<float>(size) - 1 : below);
  return {std::min<std::size_t>(first, size - 1), (first + 1) % size, pixel - below};
}

Texel MixTexels(const Texel& a, const Texel& b, float t) {
  return {Mix(a.color, b.color, t), a.alpha + (b.alpha - a.alpha) * t};
}

}  // namespace

Texture::Texture(Image image) {
  while (std::max(image.width, image.height) > kLargestSide) image = Halved(image);
  levels_.push_back(std::move(image));
  while (std::max(levels_.back().width, levels_.back().height) > 1)
    levels_.push_back(Halved(levels_.back()));
}

Texel Texture::Sample(float u, float v, float detail, bool isColor, Wraps wraps) const {
  if (!std::isfinite(u) || !std::isfinite(v)) return {};
  const float pixels = detail * static_cast<float>(std::max(levels_[0].width, levels_[0].height));
  const float level = pixels > 1 ? std::log2(pixels) : 0.0F;
  const float last = static_cast<float>(levels_.size() - 1);
  const float upper = std::floor(std::min(level, last));
  const auto index = static_cast<std::size_t>(upper);
  const Texel sharp = SampleLevel(levels_[index], u, v, isColor, wraps);
  if (level <= 0 || upper >= last) return sharp;
  return MixTexels(sharp, SampleLevel(levels_[index + 1], u, v, isColor, wraps), level - upper);
}

Texel Texture::SampleLevel(const Image& level, float u, float v, bool isColor, Wraps wraps) {
  const Place x = PlaceOf(u, level.width, wraps.u);
  const Place y = PlaceOf(v, level.height, wraps.v);
  const Texel top = MixTexels(PixelAt(level, x.first, y.first, isColor),
                              PixelAt(level, x.second, y.first, isColor), x.share);
  const Texel low = MixTexels(PixelAt(level, x.first, y.second, isColor),
                              PixelAt(level, x.second, y.second, isColor), x.share);
  return MixTexels(top, low, y.share);
}

std::size_t Texture::Bytes() const {
  std::size_t bytes = 0;
  for (const Image& level : levels_)
    bytes += level.bytes.size() + level.floats.size() * sizeof(float);
  return bytes;
}

std::shared_ptr<const Texture> TextureFile::Get(std::string* problem, bool* decoded) {
  const std::lock_guard lock(lock_);
  *decoded = bytes_ != nullptr;
  if (bytes_) {
    Result<Image> image = DecodeImage(*bytes_);
    bytes_.reset();
    if (image) {
      texture_ = std::make_shared<const Texture>(image.Take());
    } else {
      problem_ = image.Message();
    }
  }
  *problem = problem_;
  return texture_;
}

std::size_t TextureFile::Bytes() const {
  const std::lock_guard lock(lock_);
  return texture_ ? texture_->Bytes() : 0;
}

bool TextureFile::IsIdle() const {
  const std::lock_guard lock(lock_);
  return texture_ && texture_.use_count() == 1;
}

}  // namespace engine
