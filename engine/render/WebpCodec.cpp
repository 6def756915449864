#include <webp/decode.h>

#include "engine/render/Codecs.h"

namespace engine {

bool LooksLikeWebp(std::string_view bytes) {
  return bytes.starts_with("RIFF") && bytes.size() > 12 && bytes.substr(8, 4) == "WEBP";
}

Result<Image> DecodeWebp(std::string_view bytes) {
  using Answer = Result<Image>;
  const auto* data = reinterpret_cast<const std::uint8_t*>(bytes.data());
  WebPBitstreamFeatures features;
  if (WebPGetFeatures(data, bytes.size(), &features) != VP8_STATUS_OK)
    return Answer::Failure("The WebP picture cannot be read.");
  if (features.has_animation)
    return Answer::Failure("The WebP picture moves; only still ones are read.");
  const auto width = static_cast<std::uint32_t>(features.width);
  const auto height = static_cast<std::uint32_t>(features.height);
  if (Status size = CheckImageClaim(width, height, 4, bytes.size()); !size) return size;
  Image image{width, height, {}, {}};
  image.bytes.resize(image.PixelCount() * 4);
  if (!WebPDecodeRGBAInto(data, bytes.size(), image.bytes.data(), image.bytes.size(),
                          features.width * 4))
    return Answer::Failure("The WebP picture is damaged.");
  return image;
}

}  // namespace engine
