#include "engine/render/Texture.h"

#include <array>

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

// What a byte stands for.
struct ByteValues {
  std::array<float, 256> light;   // of a color
  std::array<float, 256> number;  // of a plain number
  std::array<float, 256> share;   // of opacity

  ByteValues() {
    for (std::size_t byte = 0; byte < light.size(); ++byte) {
      light[byte] = SrgbToLinear(static_cast<std::uint8_t>(byte));
      number[byte] = static_cast<float>(byte) * (1.0F / 255);
      share[byte] = static_cast<float>(byte) / 255;
    }
  }
};

const ByteValues& ValuesOfBytes() {
  static const ByteValues values;
  return values;
}

// Red, green, blue and opacity at once; each is reckoned as by itself.
using Four = float __attribute__((vector_size(16)));

Four PixelAt(const Image& image, std::size_t x, std::size_t y, const std::array<float, 256>& of,
             const std::array<float, 256>& share) {
  const std::size_t at = (y * image.width + x) * 4;
  if (image.IsFloat()) {
    const float* p = &image.floats[at];
    return Four{p[0], p[1], p[2], p[3]};
  }
  const std::uint8_t* p = &image.bytes[at];
  return Four{of[p[0]], of[p[1]], of[p[2]], share[p[3]]};
}

Four MixFour(Four a, Four b, float t) { return a + (b - a) * t; }

// The same as std::floor, but no call of a function for what textures have for coordinates.
float Floor(float x) {
  constexpr float kWhole = 8388608;  // from here on every float is a whole number
  if (!(std::abs(x) < kWhole)) return std::floor(x);
  const auto whole = static_cast<float>(static_cast<std::int32_t>(x));
  return whole > x ? whole - 1 : whole;
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
  return {first, std::min<std::size_t>(first + 1, size - 1), pixel - Floor(pixel)};
}

Place PlaceOf(float coordinate, std::uint32_t size, TextureWrap wrap) {
  if (wrap == TextureWrap::Clamp) return PlaceWithin(std::clamp(coordinate, 0.0F, 1.0F), size);
  if (wrap == TextureWrap::Mirror) {
    const float pair = coordinate * 0.5F;
    return PlaceWithin(1 - std::abs(1 - 2 * (pair - Floor(pair))), size);
  }
  const float inside = coordinate - Floor(coordinate);
  const float pixel = inside * static_cast<float>(size) - 0.5F;
  const float below = Floor(pixel);
  const auto first = static_cast<std::size_t>(below < 0 ? static_cast<float>(size) - 1 : below);
  const std::size_t next = first + 1;
  return {std::min<std::size_t>(first, size - 1), next < size ? next : next - size, pixel - below};
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
  const float upper = Floor(std::min(level, last));
  const auto index = static_cast<std::size_t>(upper);
  const Texel sharp = SampleLevel(levels_[index], u, v, isColor, wraps);
  if (level <= 0 || upper >= last) return sharp;
  return MixTexels(sharp, SampleLevel(levels_[index + 1], u, v, isColor, wraps), level - upper);
}

Texel Texture::SampleLevel(const Image& level, float u, float v, bool isColor, Wraps wraps) {
  const Place x = PlaceOf(u, level.width, wraps.u);
  const Place y = PlaceOf(v, level.height, wraps.v);
  const ByteValues& values = ValuesOfBytes();
  const auto& of = isColor ? values.light : values.number;
  const auto at = [&](std::size_t column, std::size_t row) {
    return PixelAt(level, column, row, of, values.share);
  };
  const Four top = MixFour(at(x.first, y.first), at(x.second, y.first), x.share);
  const Four low = MixFour(at(x.first, y.second), at(x.second, y.second), x.share);
  const Four texel = MixFour(top, low, y.share);
  return {{texel[0], texel[1], texel[2]}, texel[3]};
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
