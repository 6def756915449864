#include "host/BaseBitmap.h"

#include <algorithm>

#include "engine/outside/Services.h"
#include "engine/render/ImageDecoder.h"

namespace host {

namespace {

// No picture that is worth reading is larger as a file.
constexpr std::uint64_t kLargestFile = engine::kLargestImageBytes;

engine::Image ToImage(LONG width, LONG height, const std::vector<std::uint8_t>& pixels) {
  engine::Image image{
      static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height), {}, {}};
  image.bytes.resize(image.PixelCount() * 4, 255);
  for (std::size_t i = 0; i < image.PixelCount(); ++i)
    std::copy_n(&pixels[i * 3], 3, &image.bytes[i * 4]);
  return image;
}

engine::Result<std::string> Encode(const engine::Image& image, LONG format) {
  if (format == FILTER_TIF) return engine::EncodeTiff(image);
  return engine::EncodePng(image);
}

std::uint8_t Channel(LONG value) {
  return static_cast<std::uint8_t>(std::clamp<LONG>(value, 0, 255));
}

}  // namespace

BaseBitmap* BaseBitmap::Alloc() { return new BaseBitmap; }

void BaseBitmap::Free(BaseBitmap*& bitmap) {
  delete bitmap;
  bitmap = nullptr;
}

LONG BaseBitmap::Init(LONG width, LONG height, LONG depth) {
  width_ = height_ = 0;
  pixels_.clear();
  if (depth != 24 || width < 1 || height < 1) return IMAGERESULT_WRONGTYPE;
  if (!engine::CheckImageSize(static_cast<ULONG>(width), static_cast<ULONG>(height), 3))
    return IMAGERESULT_OUTOFMEMORY;
  pixels_.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 3);
  width_ = width;
  height_ = height;
  return IMAGERESULT_OK;
}

LONG BaseBitmap::Init(const Filename& file) {
  width_ = height_ = 0;
  pixels_.clear();
  const engine::Services& services = engine::PublishedServices();
  const std::string path = file.GetString().ToUtf8();
  if (services.files.Kind(path) != engine::FileKind::File) return IMAGERESULT_NOTEXISTING;
  const engine::Result<std::string> bytes = services.files.ReadFile(path, kLargestFile);
  if (!bytes) return IMAGERESULT_FILEERROR;
  // Plug-ins ask for pictures of their own, which are trusted as their code is: a child for an icon
  // would cost each start of the program more than all the rest of it.
  const engine::Result<engine::Image> decoded = engine::DecodeImageHere(bytes.Value());
  if (!decoded) {
    services.ledger.AddNote(path, "Cannot show \"" + path + "\": " + decoded.Message());
    return IMAGERESULT_WRONGTYPE;
  }
  const engine::Image image = engine::ToBytes(decoded.Value());
  const LONG result = Init(static_cast<LONG>(image.width), static_cast<LONG>(image.height));
  for (std::size_t i = 0; i < image.PixelCount(); ++i)
    std::copy_n(&image.bytes[i * 4], 3, &pixels_[i * 3]);
  return result;
}

LONG BaseBitmap::Save(const Filename& file, LONG format) const {
  if (format != FILTER_TIF && format != FILTER_PNG) return IMAGERESULT_WRONGTYPE;
  if (width_ == 0) return IMAGERESULT_FILEERROR;
  const engine::Result<std::string> bytes = Encode(ToImage(width_, height_, pixels_), format);
  if (!bytes) return IMAGERESULT_FILEERROR;
  const engine::Status written =
      engine::PublishedServices().files.ReplaceFile(file.GetString().ToUtf8(), bytes.Value());
  return written ? IMAGERESULT_OK : IMAGERESULT_FILEERROR;
}

void BaseBitmap::GetPixel(LONG x, LONG y, LONG* r, LONG* g, LONG* b) const {
  const bool inside = x >= 0 && y >= 0 && x < width_ && y < height_;
  const std::size_t at = inside ? (static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) +
                                   static_cast<std::size_t>(x)) *
                                      3
                                : 0;
  *r = inside ? pixels_[at] : 0;
  *g = inside ? pixels_[at + 1] : 0;
  *b = inside ? pixels_[at + 2] : 0;
}

Bool BaseBitmap::SetPixel(LONG x, LONG y, LONG r, LONG g, LONG b) {
  if (x < 0 || y < 0 || x >= width_ || y >= height_) return FALSE;
  const std::size_t at = (static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) +
                          static_cast<std::size_t>(x)) *
                         3;
  pixels_[at] = Channel(r);
  pixels_[at + 1] = Channel(g);
  pixels_[at + 2] = Channel(b);
  return TRUE;
}

}  // namespace host
