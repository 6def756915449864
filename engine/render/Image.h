// Image: a picture in memory with an alpha channel, either 8 bits a channel as files and screens
// hold them or linear floats as high-range files and the renderer do; and the codecs between it and
// the bytes of image files. Values; any thread.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "engine/core/Result.h"
#include "engine/scene/PictureLimits.h"

namespace engine {

// The bound of a whole image file, checked before memory is taken.
inline constexpr std::uint64_t kLargestImageBytes = 1ull << 30;

struct Image {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  // Red, green, blue, alpha of each pixel, row by row from the top left; exactly one of the two is
  // filled.
  std::vector<std::uint8_t> bytes;  // 0..255, colors as sRGB, alpha not multiplied in
  std::vector<float> floats;        // linear, alpha not multiplied in

  bool IsFloat() const { return !floats.empty(); }
  std::size_t PixelCount() const { return static_cast<std::size_t>(width) * height; }
};

// Success when a picture of that size stays within the bounds with `bytesPerPixel`, else a message
// with the size.
Status CheckImageSize(std::uint64_t width, std::uint64_t height, std::uint64_t bytesPerPixel);

// Reads a TIFF, PNG, JPEG, OpenEXR, WebP, BMP or TGA file held in memory; the kind is told by the
// content. Fails with a message for anything else, for damage, and for pictures beyond the bounds.
// OpenEXR gives floats, the others bytes.
Result<Image> DecodeImage(std::string_view bytes);

// The bytes of a file with the picture; only for images of bytes. TIFF: 24-bit RGB, LZW with
// horizontal differencing, one plane, alpha left out. PNG: 24-bit RGB, alpha left out where it is
// opaque everywhere.
Result<std::string> EncodeTiff(const Image& image);
Result<std::string> EncodePng(const Image& image);
// The bytes of an OpenEXR file with half floats, linear; only for images of floats. Scan lines of
// red, green and blue, alpha left out where it is 1 everywhere, ZIP compression. `comments` becomes
// the attribute of that name where it is not empty.
Result<std::string> EncodeExr(const Image& image, const std::string& comments = "");

// The picture as bytes: floats become sRGB, clipped to 0..1.
Image ToBytes(const Image& image);
// A picture no larger than this one, each pixel the mean of those it stands for, averaged as light
// is. Bytes stay bytes and floats floats.
Image ScaledDown(const Image& image, std::uint32_t width, std::uint32_t height);

// The transfer function of sRGB (IEC 61966-2-1) and its inverse; linear in 0..1, clipped.
std::uint8_t LinearToSrgb(float linear);
float SrgbToLinear(std::uint8_t byte);
// Rounds up from that share between two bytes on, 0..1 instead of a half: with thresholds that
// change from pixel to pixel a slow gradient shows no bands.
std::uint8_t LinearToSrgb(float linear, float threshold);

}  // namespace engine
