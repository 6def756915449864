#include <tiffio.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <memory>

#include "engine/render/Codecs.h"

namespace engine {

namespace {

// A TIFF file in memory as the library wants to see it, and its first complaint. `text` is what is
// written to; reading looks at `view` only.
struct MemoryFile {
  std::string_view view;
  std::string* text = nullptr;
  std::size_t position = 0;
  std::string complaint;

  std::size_t Size() const { return text ? text->size() : view.size(); }
  const char* Data() const { return text ? text->data() : view.data(); }
};

MemoryFile& FileOf(thandle_t handle) { return *static_cast<MemoryFile*>(handle); }

tmsize_t ReadProc(thandle_t handle, void* buffer, tmsize_t size) {
  MemoryFile& file = FileOf(handle);
  if (size <= 0 || file.position >= file.Size()) return 0;
  const std::size_t count = std::min(static_cast<std::size_t>(size), file.Size() - file.position);
  std::memcpy(buffer, file.Data() + file.position, count);
  file.position += count;
  return static_cast<tmsize_t>(count);
}

tmsize_t WriteProc(thandle_t handle, void* buffer, tmsize_t size) {
  MemoryFile& file = FileOf(handle);
  if (!file.text || size <= 0) return 0;
  const auto count = static_cast<std::size_t>(size);
  if (file.text->size() < file.position + count) file.text->resize(file.position + count);
  std::memcpy(file.text->data() + file.position, buffer, count);
  file.position += count;
  return size;
}

toff_t SeekProc(thandle_t handle, toff_t offset, int whence) {
  MemoryFile& file = FileOf(handle);
  const std::size_t base = whence == SEEK_SET   ? 0
                           : whence == SEEK_CUR ? file.position
                                                : file.Size();
  return file.position = base + static_cast<std::size_t>(offset);
}

int CloseProc(thandle_t) { return 0; }
toff_t SizeProc(thandle_t handle) { return FileOf(handle).Size(); }
int MapProc(thandle_t, void**, toff_t*) { return 0; }
void UnmapProc(thandle_t, void*, toff_t) {}

int KeepComplaint(TIFF*, void* user, const char*, const char* format, va_list arguments) {
  auto* file = static_cast<MemoryFile*>(user);
  char text[300];
  std::vsnprintf(text, sizeof text, format, arguments);
  if (file->complaint.empty()) file->complaint = text;
  return 1;
}

int DropWarning(TIFF*, void*, const char*, const char*, va_list) { return 1; }

struct CloseTiff {
  void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using TiffFile = std::unique_ptr<TIFF, CloseTiff>;

TiffFile Open(MemoryFile& file, const char* mode, std::uint64_t memory = kLargestImageBytes) {
  const std::unique_ptr<TIFFOpenOptions, void (*)(TIFFOpenOptions*)> options(TIFFOpenOptionsAlloc(),
                                                                             TIFFOpenOptionsFree);
  if (!options) return nullptr;
  TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), static_cast<tmsize_t>(memory));
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), KeepComplaint, &file);
  TIFFOpenOptionsSetWarningHandlerExtR(options.get(), DropWarning, nullptr);
  return TiffFile(TIFFClientOpenExt("picture", mode, &file, ReadProc, WriteProc, SeekProc,
                                    CloseProc, SizeProc, MapProc, UnmapProc, options.get()));
}

Status Problem(const MemoryFile& file, const std::string& what) {
  return Status::Failure(what + (file.complaint.empty() ? "." : " (" + file.complaint + ")."));
}

// The library multiplies colors by alpha; this takes it back.
std::uint8_t Unmultiplied(std::uint32_t channel, std::uint32_t alpha) {
  return static_cast<std::uint8_t>(
      alpha == 0 ? 0 : std::min<std::uint32_t>(255, (channel * 255 + alpha / 2) / alpha));
}

// In place: the bytes hold the pixels as the library packs them.
void Unpack(std::vector<std::uint8_t>& bytes) {
  for (std::size_t i = 0; i < bytes.size(); i += 4) {
    std::uint32_t packed;
    std::memcpy(&packed, &bytes[i], sizeof(packed));
    const std::uint32_t alpha = TIFFGetA(packed);
    bytes[i] = Unmultiplied(TIFFGetR(packed), alpha);
    bytes[i + 1] = Unmultiplied(TIFFGetG(packed), alpha);
    bytes[i + 2] = Unmultiplied(TIFFGetB(packed), alpha);
    bytes[i + 3] = static_cast<std::uint8_t>(alpha);
  }
}

void SetTags(TIFF* tiff, const Image& image) {
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, image.width);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, image.height);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 3);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_LZW);
  TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(tiff, 0));
}

bool WriteRows(TIFF* tiff, const Image& image) {
  std::vector<std::uint8_t> row(static_cast<std::size_t>(image.width) * 3);
  for (std::uint32_t y = 0; y < image.height; ++y) {
    const std::uint8_t* pixel = &image.bytes[static_cast<std::size_t>(y) * image.width * 4];
    for (std::size_t x = 0; x < image.width; ++x) std::copy_n(pixel + x * 4, 3, &row[x * 3]);
    if (TIFFWriteScanline(tiff, row.data(), y, 0) != 1) return false;
  }
  return TIFFFlush(tiff) == 1;
}

}  // namespace

Result<Image> DecodeTiff(std::string_view bytes) {
  MemoryFile file{bytes, nullptr, 0, {}};
  const TiffFile tiff = Open(file, "rm", MemoryForImage(bytes.size()));
  if (!tiff) return Problem(file, "The TIFF picture cannot be read");
  Image image;
  TIFFGetField(tiff.get(), TIFFTAG_IMAGEWIDTH, &image.width);
  TIFFGetField(tiff.get(), TIFFTAG_IMAGELENGTH, &image.height);
  if (Status size = CheckImageClaim(image.width, image.height, 4, bytes.size()); !size) return size;
  image.bytes.resize(image.PixelCount() * 4);
  if (TIFFReadRGBAImageOriented(tiff.get(), image.width, image.height,
                                reinterpret_cast<std::uint32_t*>(image.bytes.data()),
                                ORIENTATION_TOPLEFT, 1) != 1) {
    return Problem(file, "The TIFF picture is damaged or of an unusual kind");
  }
  Unpack(image.bytes);
  return image;
}

Result<std::string> EncodeTiff(const Image& image) {
  if (Status size = CheckImageSize(image.width, image.height, 4); !size) return size;
  if (image.bytes.size() != image.PixelCount() * 4)
    return Result<std::string>::Failure("Only pictures of bytes can be written.");
  std::string text;
  MemoryFile file{{}, &text, 0, {}};
  TiffFile tiff = Open(file, "wl");
  if (!tiff) return Problem(file, "The TIFF picture cannot be written");
  SetTags(tiff.get(), image);
  if (!WriteRows(tiff.get(), image)) return Problem(file, "The TIFF picture cannot be written");
  tiff.reset();
  return text;
}

}  // namespace engine
