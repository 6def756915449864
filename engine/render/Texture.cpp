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

// The value of each byte, by its use.
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

// std::floor without a function call for the usual texture coordinates.
float Floor(float x) {
  constexpr float kWhole = 8388608;  // from here on every float is a whole number
  if (!(std::abs(x) < kWhole)) return std::floor(x);
  const auto whole = static_cast<float>(static_cast<std::int32_t>(x));
  return whole > x ? whole - 1 : whole;
}

// The coordinate within the picture, 0..1, that stands for one which may lie outside.
float Inside(float coordinate, TextureWrap wrap) {
  if (wrap == TextureWrap::Clamp) return std::clamp(coordinate, 0.0F, 1.0F);
  if (wrap == TextureWrap::Repeat) return coordinate - Floor(coordinate);
  const float pair = coordinate * 0.5F;
  return 1 - std::abs(1 - 2 * (pair - Floor(pair)));
}

// Red, green, blue and opacity between the four pixels around a spot; `i` is where its numbers of
// that level begin.
template <class PixelAt>
Four Between(const Image& image, const Texture::Spot& spot, int i, const PixelAt& pixelAt) {
  const std::size_t upper = static_cast<std::size_t>(spot.first[i + 1]) * image.width;
  const std::size_t lower = static_cast<std::size_t>(spot.second[i + 1]) * image.width;
  const auto left = static_cast<std::size_t>(spot.first[i]);
  const auto right = static_cast<std::size_t>(spot.second[i]);
  const float share = spot.share[i];
  const Four top = Mix(pixelAt((upper + left) * 4), pixelAt((upper + right) * 4), share);
  const Four low = Mix(pixelAt((lower + left) * 4), pixelAt((lower + right) * 4), share);
  return Mix(top, low, spot.share[i + 1]);
}

}  // namespace

Texture::Texture(Image image) {
  while (std::max(image.width, image.height) > kLargestSide) image = Halved(image);
  levels_.push_back(std::move(image));
  while (std::max(levels_.back().width, levels_.back().height) > 1)
    levels_.push_back(Halved(levels_.back()));
}

Texture::Spot Texture::SpotAt(float u, float v, float detail, const Sampling& sampling) const {
  Spot spot;
  if (!std::isfinite(u) || !std::isfinite(v)) return spot;
  const float pixels = detail * static_cast<float>(std::max(levels_[0].width, levels_[0].height));
  const float level = pixels > 1 ? std::log2(pixels) : 0.0F;
  const std::size_t last = levels_.size() - 1;
  const float upper = Floor(std::min(level, static_cast<float>(last)));
  spot.isSomewhere = true;
  spot.level = static_cast<std::size_t>(upper);
  spot.coarser = spot.level < last ? level - upper : 0;

  const Image& fine = levels_[spot.level];
  const Image& coarse = levels_[std::min(spot.level + 1, last)];
  const FourWhole size{
      static_cast<std::int32_t>(fine.width), static_cast<std::int32_t>(fine.height),
      static_cast<std::int32_t>(coarse.width), static_cast<std::int32_t>(coarse.height)};
  const std::int32_t endsU = sampling.u == TextureWrap::Repeat ? 0 : -1;
  const std::int32_t endsV = sampling.v == TextureWrap::Repeat ? 0 : -1;
  const FourWhole ends{endsU, endsV, endsU, endsV};
  const float insideU = Inside(u, sampling.u);
  const float insideV = Inside(v, sampling.v);
  Four pixel = Four{insideU, insideV, insideU, insideV} * ToFour(size) - 0.5F;
  const Four edge = ToFour(size - 1);
  const Four notBefore = pixel < 0 ? Four{} : pixel;
  const Four within = edge < notBefore ? edge : notBefore;
  pixel = ends ? within : pixel;
  const Four below = Floor(pixel);
  spot.share = pixel - below;
  if (sampling.isSharp && spot.level == 0) {
    for (const int i : {0, 1}) spot.share[i] = spot.share[i] < 0.5F ? 0.0F : 1.0F;
  }
  spot.first = WholeOf(below < 0 ? edge : below);
  const FourWhole next = spot.first + 1;
  spot.second = next < size ? next : (ends ? size - 1 : FourWhole{});
  return spot;
}

bool Texture::IsLike(const Texture& other) const {
  return levels_[0].width == other.levels_[0].width && levels_[0].height == other.levels_[0].height;
}

Texel Texture::ColorAt(const Spot& spot) const { return At(spot, ValuesOfBytes().light); }

Texel Texture::NumbersAt(const Spot& spot) const { return At(spot, ValuesOfBytes().number); }

Texel Texture::At(const Spot& spot, const std::array<float, 256>& of) const {
  if (!spot.isSomewhere) return {};
  const auto& share = ValuesOfBytes().share;
  const auto between = [&](const Image& image, int i) {
    if (image.IsFloat()) {
      return Between(image, spot, i, [&](std::size_t at) {
        const float* p = &image.floats[at];
        return Four{p[0], p[1], p[2], p[3]};
      });
    }
    return Between(image, spot, i, [&](std::size_t at) {
      const std::uint8_t* p = &image.bytes[at];
      return Four{of[p[0]], of[p[1]], of[p[2]], share[p[3]]};
    });
  };
  Four texel = between(levels_[spot.level], 0);
  if (spot.coarser > 0) texel = Mix(texel, between(levels_[spot.level + 1], 2), spot.coarser);
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
