// jpeglib.h needs FILE, and jerror.h needs jpeglib.h before it.
#include <csetjmp>
#include <cstdio>
// clang-format off
#include <jpeglib.h>
#include <jerror.h>
// clang-format on

#include <cstdlib>

#include "engine/render/Codecs.h"

namespace engine {

namespace {

// A hostile progressive file can make the library work for hours on scans that add nothing.
constexpr int kMostScans = 200;

// The library reports an error by calling a function that must not come back; it jumps to where
// reading or writing began.
struct JpegErrors {
  jpeg_error_mgr base;
  std::jmp_buf back;
  char message[JMSG_LENGTH_MAX];
};

struct JpegReading {
  jpeg_decompress_struct control{};
  JpegErrors errors{};
  jpeg_progress_mgr progress{};
  Status size;
  JpegReading() = default;
  JpegReading(const JpegReading&) = delete;
  JpegReading& operator=(const JpegReading&) = delete;
  ~JpegReading() { jpeg_destroy_decompress(&control); }
};

void JumpBack(j_common_ptr common) {
  auto* errors = reinterpret_cast<JpegErrors*>(common->client_data);
  common->err->format_message(common, errors->message);
  std::longjmp(errors->back, 1);
}

// Damage that the library would paint over is an error here; bytes between two markers are common
// and do no harm.
void StopAtDamage(j_common_ptr common, int level) {
  if (level < 0 && common->err->msg_code != JWRN_EXTRANEOUS_DATA) JumpBack(common);
}

void StopAtManyScans(j_common_ptr common) {
  const auto* control = reinterpret_cast<j_decompress_ptr>(common);
  if (control->input_scan_number > kMostScans) ERREXIT(common, JERR_BAD_PROGRESSION);
}

void Begin(JpegReading& reading, std::string_view bytes) {
  reading.control.err = jpeg_std_error(&reading.errors.base);
  reading.errors.base.error_exit = JumpBack;
  reading.errors.base.emit_message = StopAtDamage;
  reading.control.client_data = &reading.errors;
  jpeg_create_decompress(&reading.control);
  reading.control.client_data = &reading.errors;
  reading.control.mem->max_memory_to_use = static_cast<long>(kLargestImageBytes);
  reading.progress.progress_monitor = StopAtManyScans;
  reading.control.progress = &reading.progress;
  jpeg_mem_src(&reading.control, reinterpret_cast<const unsigned char*>(bytes.data()),
               bytes.size());
}

bool HasInk(const jpeg_decompress_struct& control) {
  return control.jpeg_color_space == JCS_CMYK || control.jpeg_color_space == JCS_YCCK;
}

void ReadRows(JpegReading& reading, Image& image) {
  while (reading.control.output_scanline < reading.control.output_height) {
    JSAMPROW row =
        &image.bytes[static_cast<std::size_t>(reading.control.output_scanline) * image.width * 4];
    jpeg_read_scanlines(&reading.control, &row, 1);
  }
  jpeg_finish_decompress(&reading.control);
}

// No object with a destructor lives in here, because an error jumps out of it; the arguments belong
// to the caller.
bool Read(JpegReading& reading, std::string_view bytes, Image& image) {
  if (setjmp(reading.errors.back)) return false;
  Begin(reading, bytes);
  jpeg_read_header(&reading.control, TRUE);
  reading.size =
      CheckImageClaim(reading.control.image_width, reading.control.image_height, 4, bytes.size());
  if (!reading.size) return false;
  image.width = reading.control.image_width;
  image.height = reading.control.image_height;
  image.bytes.resize(image.PixelCount() * 4);
  reading.control.out_color_space = HasInk(reading.control) ? JCS_CMYK : JCS_EXT_RGBA;
  jpeg_start_decompress(&reading.control);
  ReadRows(reading, image);
  return true;
}

// Inks as the common programs write them: 255 is no ink.
void InksToColors(Image& image) {
  for (std::size_t i = 0; i < image.bytes.size(); i += 4) {
    const int key = image.bytes[i + 3];
    for (std::size_t c = 0; c < 3; ++c)
      image.bytes[i + c] = static_cast<std::uint8_t>(image.bytes[i + c] * key / 255);
    image.bytes[i + 3] = 255;
  }
}

}  // namespace

Result<Image> DecodeJpeg(std::string_view bytes) {
  JpegReading reading;
  Image image;
  if (!Read(reading, bytes, image)) {
    if (!reading.size) return reading.size;
    return Result<Image>::Failure("The JPEG picture is damaged (" +
                                  std::string(reading.errors.message) + ").");
  }
  if (HasInk(reading.control)) InksToColors(image);
  return image;
}

namespace {

struct JpegWriting {
  jpeg_compress_struct control{};
  JpegErrors errors{};
  unsigned char* bytes = nullptr;  // of the library
  unsigned long size = 0;
  JpegWriting() = default;
  JpegWriting(const JpegWriting&) = delete;
  JpegWriting& operator=(const JpegWriting&) = delete;
  ~JpegWriting() {
    jpeg_destroy_compress(&control);
    std::free(bytes);
  }
};

// As Read: nothing in here has a destructor.
bool Write(JpegWriting& writing, const Image& image, int quality) {
  if (setjmp(writing.errors.back)) return false;
  writing.control.err = jpeg_std_error(&writing.errors.base);
  writing.errors.base.error_exit = JumpBack;
  writing.control.client_data = &writing.errors;
  jpeg_create_compress(&writing.control);
  jpeg_mem_dest(&writing.control, &writing.bytes, &writing.size);
  writing.control.image_width = image.width;
  writing.control.image_height = image.height;
  writing.control.input_components = 4;
  writing.control.in_color_space = JCS_EXT_RGBX;
  jpeg_set_defaults(&writing.control);
  jpeg_set_quality(&writing.control, quality, TRUE);
  jpeg_start_compress(&writing.control, TRUE);
  while (writing.control.next_scanline < writing.control.image_height) {
    const std::size_t at = static_cast<std::size_t>(writing.control.next_scanline) * image.width;
    auto* row = const_cast<JSAMPLE*>(&image.bytes[at * 4]);  // which is only read
    jpeg_write_scanlines(&writing.control, &row, 1);
  }
  jpeg_finish_compress(&writing.control);
  return true;
}

}  // namespace

Result<std::string> EncodeJpeg(const Image& image, int quality) {
  if (Status size = CheckImageSize(image.width, image.height, 4); !size) return size;
  if (image.bytes.size() != image.PixelCount() * 4)
    return Result<std::string>::Failure("Only pictures of bytes can be written.");
  JpegWriting writing;
  if (!Write(writing, image, quality)) {
    return Result<std::string>::Failure("The JPEG picture cannot be written (" +
                                        std::string(writing.errors.message) + ").");
  }
  return std::string(reinterpret_cast<const char*>(writing.bytes), writing.size);
}

}  // namespace engine
