#include <ImfIO.h>
#include <ImfRgbaFile.h>
#include <ImfStringAttribute.h>

#include <algorithm>
#include <cmath>
#include <cstring>

#include "engine/render/Codecs.h"
#include "engine/render/ExrHead.h"

namespace engine {

namespace {

class MemoryStream : public Imf::IStream {
 public:
  explicit MemoryStream(std::string_view bytes) : IStream("picture"), bytes_(bytes) {}
  bool read(char buffer[], int count) override {
    if (count < 0 || static_cast<std::size_t>(count) > bytes_.size() - position_)
      throw std::runtime_error("it ends too early");
    std::memcpy(buffer, bytes_.data() + position_, static_cast<std::size_t>(count));
    position_ += static_cast<std::size_t>(count);
    return position_ < bytes_.size();
  }
  std::uint64_t tellg() override { return position_; }
  void seekg(std::uint64_t position) override {
    if (position > bytes_.size()) throw std::runtime_error("it ends too early");
    position_ = position;
  }

 private:
  std::string_view bytes_;
  std::size_t position_ = 0;
};

class MemorySink : public Imf::OStream {
 public:
  MemorySink() : OStream("picture") {}
  void write(const char bytes[], int count) override {
    const std::size_t end = position_ + static_cast<std::size_t>(count);
    if (end > text_.size()) text_.resize(end);
    std::memcpy(text_.data() + position_, bytes, static_cast<std::size_t>(count));
    position_ = end;
  }
  std::uint64_t tellp() override { return position_; }
  void seekp(std::uint64_t position) override { position_ = position; }
  std::string Take() { return std::move(text_); }

 private:
  std::string text_;
  std::size_t position_ = 0;
};

// A number that is not finite would spread through every average of pixels.
float Finite(float value) { return std::isfinite(value) ? value : 0.0F; }

void Unpack(const Imf::Rgba& pixel, float* channels) {
  const float alpha = std::clamp(Finite(pixel.a), 0.0F, 1.0F);
  // Files hold colors multiplied by alpha; a color without any alpha is light alone and kept.
  const float factor = alpha > 0 ? 1 / alpha : 1;
  channels[0] = Finite(Finite(pixel.r) * factor);
  channels[1] = Finite(Finite(pixel.g) * factor);
  channels[2] = Finite(Finite(pixel.b) * factor);
  channels[3] = alpha;
}

Result<Image> Read(std::string_view bytes) {
  if (Status claims = CheckExrClaims(bytes); !claims) return claims;
  MemoryStream stream(bytes);
  Imf::RgbaInputFile file(stream, 1);
  const Imath::Box2i window = file.dataWindow();
  const std::int64_t width = std::int64_t{window.max.x} - window.min.x + 1;
  const std::int64_t height = std::int64_t{window.max.y} - window.min.y + 1;
  if (width <= 0 || height <= 0) return Result<Image>::Failure("The OpenEXR picture is empty.");
  const Status size =
      CheckImageClaim(static_cast<std::uint64_t>(width), static_cast<std::uint64_t>(height),
                      4 * sizeof(float), bytes.size());
  if (!size) return size;
  Image image{static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height), {}, {}};
  image.floats.resize(image.PixelCount() * 4);
  std::vector<Imf::Rgba> row(image.width);
  for (std::uint32_t y = 0; y < image.height; ++y) {
    // The library places pixels by their absolute coordinates, all lines at the same place here.
    const int line = window.min.y + static_cast<int>(y);
    file.setFrameBuffer(row.data() - window.min.x, 1, 0);
    file.readPixels(line);
    for (std::size_t x = 0; x < row.size(); ++x)
      Unpack(row[x], &image.floats[(y * row.size() + x) * 4]);
  }
  return image;
}

// Clamps to the range of a half float: brighter light becomes its largest value.
float WithinHalf(float value) { return std::clamp(Finite(value), -65504.0F, 65504.0F); }

std::string Write(const Image& image, const std::string& comments) {
  bool isOpaque = true;
  std::vector<Imf::Rgba> pixels(image.PixelCount());
  for (std::size_t i = 0; i < pixels.size(); ++i) {
    const float* p = &image.floats[i * 4];
    const float alpha = std::clamp(Finite(p[3]), 0.0F, 1.0F);
    const auto channel = [&](float value) { return half(WithinHalf(value * alpha)); };
    pixels[i] = {channel(p[0]), channel(p[1]), channel(p[2]), half(alpha)};
    isOpaque = isOpaque && alpha == 1;
  }
  Imf::Header header(static_cast<int>(image.width), static_cast<int>(image.height));
  header.compression() = Imf::ZIP_COMPRESSION;
  if (!comments.empty()) header.insert("comments", Imf::StringAttribute(comments));
  MemorySink sink;
  {
    Imf::RgbaOutputFile file(sink, header, isOpaque ? Imf::WRITE_RGB : Imf::WRITE_RGBA);
    file.setFrameBuffer(pixels.data(), 1, image.width);
    file.writePixels(static_cast<int>(image.height));
  }
  return sink.Take();
}

}  // namespace

Result<std::string> EncodeExr(const Image& image, const std::string& comments) {
  if (Status size = CheckImageSize(image.width, image.height, 4 * sizeof(float)); !size)
    return size;
  if (image.floats.size() != image.PixelCount() * 4)
    return Result<std::string>::Failure("Only pictures of floats can be written as OpenEXR.");
  try {
    return Write(image, comments);
  } catch (const std::exception& error) {
    return Result<std::string>::Failure("The OpenEXR picture cannot be written (" +
                                        std::string(error.what()) + ").");
  }
}

Result<Image> DecodeExr(std::string_view bytes) {
  static const bool limited = [] {
    Imf::Header::setMaxImageSize(static_cast<int>(kLargestImageSide),
                                 static_cast<int>(kLargestImageSide));
    Imf::Header::setMaxTileSize(static_cast<int>(kLargestImageSide),
                                static_cast<int>(kLargestImageSide));
    return true;
  }();
  try {
    if (limited) return Read(bytes);
  } catch (const std::exception& error) {
    return Result<Image>::Failure("The OpenEXR picture is damaged (" + std::string(error.what()) +
                                  ").");
  }
  return Result<Image>::Failure("The OpenEXR picture cannot be read.");
}

}  // namespace engine
