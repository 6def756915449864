#include "engine/render/Image.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "engine/render/Codecs.h"
#include "engine/render/ImageDecoder.h"

namespace engine {

namespace {

using Decode = Result<Image> (*)(std::string_view);

struct Kind {
  std::string_view magic;
  Decode decode;
};

constexpr std::string_view kTiffLittle("II*\0", 4);
constexpr std::string_view kTiffBig("MM\0*", 4);
constexpr std::array kKinds = {
    Kind{kTiffLittle, DecodeTiff},        Kind{kTiffBig, DecodeTiff},
    Kind{"\x89PNG\r\n\x1a\n", DecodePng}, Kind{"\xff\xd8\xff", DecodeJpeg},
    Kind{"\x76\x2f\x31\x01", DecodeExr},  Kind{"BM", DecodeBmp}};

double SrgbDecode(double value) {
  return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

std::array<float, 256> MakeLinearTable() {
  std::array<float, 256> table;
  for (std::size_t i = 0; i < table.size(); ++i)
    table[i] = static_cast<float>(SrgbDecode(static_cast<double>(i) / 255));
  return table;
}

// Turning a view's pixels into bytes must cost next to nothing: the byte is looked up where its
// neighborhood begins and then moved over the few borders up to the value.
struct ByteTable {
  static constexpr std::size_t kSteps = 4096;
  // Linear value from which on the next byte is nearer
  std::array<float, 255> borders;
  std::array<std::uint8_t, kSteps> beginnings;  // by linear value

  ByteTable() {
    for (std::size_t i = 0; i < borders.size(); ++i)
      borders[i] = static_cast<float>(SrgbDecode((static_cast<double>(i) + 0.5) / 255));
    std::size_t byte = 0;
    for (std::size_t i = 0; i < kSteps; ++i) {
      while (byte < borders.size() && static_cast<float>(i) / kSteps >= borders[byte]) ++byte;
      beginnings[i] = static_cast<std::uint8_t>(byte);
    }
  }
  // `linear` in 0..1, 1 excluded.
  std::uint8_t At(float linear) const {
    std::size_t byte = beginnings[static_cast<std::size_t>(linear * kSteps)];
    while (byte < borders.size() && linear >= borders[byte]) ++byte;
    return static_cast<std::uint8_t>(byte);
  }
};

// Not a number counts as 0.
std::uint8_t ToByte(float value) {
  return value > 0 ? static_cast<std::uint8_t>(std::lround(std::min(value, 1.0F) * 255)) : 0;
}

}  // namespace

Status CheckImageSize(std::uint64_t width, std::uint64_t height, std::uint64_t bytesPerPixel) {
  const std::string size = std::to_string(width) + " x " + std::to_string(height);
  if (width == 0 || height == 0)
    return Status::Failure("The picture is empty (" + size + " pixels).");
  const std::string most = std::to_string(kLargestImageSide);
  if (width > kLargestImageSide || height > kLargestImageSide) {
    return Status::Failure("The picture is too large: " + size + " pixels, at most " + most +
                           " a side are read.");
  }
  if (width * height > kLargestImageBytes / bytesPerPixel) {
    return Status::Failure("The picture is too large: " + size + " pixels need more than 1 GiB.");
  }
  return {};
}

std::uint64_t MemoryForImage(std::size_t fileBytes) {
  constexpr std::uint64_t kOfAnyFile = 256U << 20;
  constexpr std::uint64_t kPerByte = 4096;
  return fileBytes > kLargestImageBytes / kPerByte
             ? kLargestImageBytes
             : std::min(kLargestImageBytes, kOfAnyFile + fileBytes * kPerByte);
}

Status CheckImageClaim(std::uint64_t width, std::uint64_t height, std::uint64_t bytesPerPixel,
                       std::size_t fileBytes) {
  if (Status size = CheckImageSize(width, height, bytesPerPixel); !size) return size;
  if (width * height * bytesPerPixel <= MemoryForImage(fileBytes)) return {};
  return Status::Failure("The picture claims " + std::to_string(width) + " x " +
                         std::to_string(height) + " pixels, which a file of " +
                         std::to_string(fileBytes) + " bytes is too short for.");
}

Result<Image> DecodeImageHere(std::string_view bytes) {
  for (const Kind& kind : kKinds) {
    if (bytes.substr(0, kind.magic.size()) == kind.magic) return kind.decode(bytes);
  }
  if (LooksLikeWebp(bytes)) return DecodeWebp(bytes);
  if (LooksLikeTga(bytes)) return DecodeTga(bytes);
  return Result<Image>::Failure(
      "This is no picture that can be read (TIFF, PNG, JPEG, OpenEXR, WebP, BMP, TGA).");
}

Image ToBytes(const Image& image) {
  if (!image.IsFloat()) return image;
  Image result{image.width, image.height, {}, {}};
  result.bytes.resize(image.floats.size());
  for (std::size_t i = 0; i < image.floats.size(); ++i) {
    const bool isAlpha = i % 4 == 3;
    result.bytes[i] = isAlpha ? ToByte(image.floats[i]) : LinearToSrgb(image.floats[i]);
  }
  return result;
}

namespace {

// The linear colors, multiplied by their alpha, and the alpha of a pixel.
std::array<float, 4> LightOf(const Image& image, std::size_t pixel) {
  std::array<float, 4> light;
  const std::size_t at = pixel * 4;
  if (image.IsFloat()) {
    std::copy_n(&image.floats[at], 4, light.begin());
  } else {
    for (std::size_t i = 0; i < 3; ++i) light[i] = SrgbToLinear(image.bytes[at + i]);
    light[3] = static_cast<float>(image.bytes[at + 3]) / 255;
  }
  for (std::size_t i = 0; i < 3; ++i) light[i] *= light[3];
  return light;
}

// Which pixels of `from` a pixel of `to` stands for along one side, and with which share each.
struct Stretch {
  std::uint32_t first;
  std::vector<float> shares;
};
std::vector<Stretch> StretchesOf(std::uint32_t from, std::uint32_t to) {
  std::vector<Stretch> stretches(to);
  const double step = static_cast<double>(from) / to;
  for (std::uint32_t i = 0; i < to; ++i) {
    const double begin = i * step;
    const double end = std::min<double>(from, begin + step);
    Stretch& stretch = stretches[i];
    stretch.first = static_cast<std::uint32_t>(begin);
    for (std::uint32_t at = stretch.first; at < end && at < from; ++at)
      stretch.shares.push_back(
          static_cast<float>((std::min(end, at + 1.0) - std::max<double>(begin, at)) / step));
  }
  return stretches;
}

void PutLight(const std::array<double, 4>& sum, std::size_t pixel, Image& image) {
  const double factor = sum[3] > 0 ? 1 / sum[3] : 0;
  for (std::size_t i = 0; i < 4; ++i) {
    const auto value = static_cast<float>(i < 3 ? sum[i] * factor : sum[i]);
    if (!image.floats.empty()) image.floats[pixel * 4 + i] = value;
    if (!image.bytes.empty())
      image.bytes[pixel * 4 + i] = i < 3 ? LinearToSrgb(value) : ToByte(value);
  }
}

}  // namespace

Image ScaledDown(const Image& image, std::uint32_t width, std::uint32_t height) {
  width = std::clamp(width, 1U, std::max(1U, image.width));
  height = std::clamp(height, 1U, std::max(1U, image.height));
  if (width == image.width && height == image.height) return image;
  Image result{width, height, {}, {}};
  (image.IsFloat() ? result.floats.resize(result.PixelCount() * 4)
                   : result.bytes.resize(result.PixelCount() * 4));
  const auto columns = StretchesOf(image.width, width);
  const auto rows = StretchesOf(image.height, height);
  for (std::uint32_t y = 0; y < height; ++y) {
    for (std::uint32_t x = 0; x < width; ++x) {
      std::array<double, 4> sum{};
      for (std::size_t j = 0; j < rows[y].shares.size(); ++j) {
        const std::size_t row = (rows[y].first + j) * image.width + columns[x].first;
        for (std::size_t i = 0; i < columns[x].shares.size(); ++i) {
          const std::array<float, 4> light = LightOf(image, row + i);
          const double share = double{rows[y].shares[j]} * columns[x].shares[i];
          for (std::size_t k = 0; k < 4; ++k) sum[k] += share * light[k];
        }
      }
      PutLight(sum, static_cast<std::size_t>(y) * width + x, result);
    }
  }
  return result;
}

std::uint8_t LinearToSrgb(float linear) {
  if (!(linear > 0)) return 0;
  static const ByteTable table;
  return linear >= 1 ? 255 : table.At(linear);
}

float SrgbToLinear(std::uint8_t byte) {
  static const std::array<float, 256> table = MakeLinearTable();
  return table[byte];
}

std::uint8_t LinearToSrgb(float linear, float threshold) {
  const std::uint8_t nearest = LinearToSrgb(linear);
  if (nearest == 0 || nearest == 255) return nearest;
  const float step = (SrgbToLinear(nearest + 1) - SrgbToLinear(nearest - 1)) / 2;
  return LinearToSrgb(linear + (0.5F - threshold) * step);
}

}  // namespace engine
