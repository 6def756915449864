#include <png.h>

#include <algorithm>

#include "engine/render/Codecs.h"

namespace engine {

namespace {

// Frees what the library holds whatever happens.
struct PngControl {
  png_image image{};
  PngControl() { image.version = PNG_IMAGE_VERSION; }
  PngControl(const PngControl&) = delete;
  PngControl& operator=(const PngControl&) = delete;
  ~PngControl() { png_image_free(&image); }
  Status Failure(const std::string& what) const {
    return Status::Failure(what + " (" + image.message + ").");
  }
};

bool IsOpaque(const Image& image) {
  for (std::size_t i = 3; i < image.bytes.size(); i += 4) {
    if (image.bytes[i] != 255) return false;
  }
  return true;
}

std::vector<std::uint8_t> WithoutAlpha(const Image& image) {
  std::vector<std::uint8_t> pixels;
  pixels.reserve(image.PixelCount() * 3);
  for (std::size_t i = 0; i < image.bytes.size(); i += 4)
    pixels.insert(pixels.end(), &image.bytes[i], &image.bytes[i] + 3);
  return pixels;
}

}  // namespace

Result<Image> DecodePng(std::string_view bytes) {
  PngControl control;
  if (!png_image_begin_read_from_memory(&control.image, bytes.data(), bytes.size())) {
    return control.Failure("The PNG picture cannot be read");
  }
  if (Status size = CheckImageClaim(control.image.width, control.image.height, 4, bytes.size());
      !size)
    return size;
  control.image.format = PNG_FORMAT_RGBA;
  Image image{control.image.width, control.image.height, {}, {}};
  image.bytes.resize(image.PixelCount() * 4);
  if (!png_image_finish_read(&control.image, nullptr, image.bytes.data(), 0, nullptr)) {
    return control.Failure("The PNG picture is damaged");
  }
  return image;
}

Result<std::string> EncodePng(const Image& image) {
  if (Status size = CheckImageSize(image.width, image.height, 4); !size) return size;
  if (image.bytes.size() != image.PixelCount() * 4)
    return Result<std::string>::Failure("Only pictures of bytes can be written.");
  const bool opaque = IsOpaque(image);
  const std::vector<std::uint8_t> pixels = opaque ? WithoutAlpha(image) : image.bytes;
  PngControl control;
  control.image.width = image.width;
  control.image.height = image.height;
  control.image.format = opaque ? PNG_FORMAT_RGB : PNG_FORMAT_RGBA;
  png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(control.image);
  std::string file(size, '\0');
  if (!png_image_write_to_memory(&control.image, file.data(), &size, 0, pixels.data(), 0,
                                 nullptr)) {
    return control.Failure("The PNG picture cannot be written");
  }
  file.resize(size);
  return file;
}

}  // namespace engine
