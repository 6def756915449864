// BMP and TGA, as far as models come with them: BMP of 8 bits with a palette, 24 and 32 bits, not
// compressed; TGA of 8 bits gray, 24 and 32 bits, plain or run-length coded.
#include <algorithm>
#include <array>

#include "engine/render/Codecs.h"

namespace engine {

namespace {

std::uint8_t ByteAt(std::string_view bytes, std::size_t at) {
  return at < bytes.size() ? static_cast<std::uint8_t>(bytes[at]) : std::uint8_t{0};
}

std::uint32_t Number16(std::string_view bytes, std::size_t at) {
  return ByteAt(bytes, at) | static_cast<std::uint32_t>(ByteAt(bytes, at + 1)) << 8U;
}

std::uint32_t Number32(std::string_view bytes, std::size_t at) {
  return Number16(bytes, at) | Number16(bytes, at + 2) << 16U;
}

Result<Image> Broken(const std::string& kind) {
  return Result<Image>::Failure("The " + kind + " picture is damaged or cut off.");
}

// Writes one pixel of `channels` bytes: gray, or blue, green, red and perhaps alpha.
void PutPixel(std::uint8_t* to, std::string_view from, std::size_t channels) {
  if (channels == 1) {
    std::fill_n(to, 3, ByteAt(from, 0));
  } else {
    for (std::size_t c = 0; c < 3; ++c) to[c] = ByteAt(from, 2 - c);
  }
  to[3] = channels == 4 ? ByteAt(from, 3) : std::uint8_t{255};
}

struct BmpHeader {
  std::uint32_t pixelsAt;
  std::uint32_t paletteAt;
  std::uint32_t paletteSize;
  std::uint32_t width;
  std::uint32_t height;
  bool topDown;
  std::uint32_t bits;
};

constexpr std::size_t kBmpHeaderSize = 54;

BmpHeader ReadBmpHeader(std::string_view bytes) {
  const auto height = static_cast<std::int32_t>(Number32(bytes, 22));
  const std::uint32_t palette = Number32(bytes, 46);
  BmpHeader header{};
  header.pixelsAt = Number32(bytes, 10);
  header.paletteAt = 14 + std::min<std::uint32_t>(Number32(bytes, 14), 1U << 20U);
  header.width = Number32(bytes, 18);
  header.height =
      height < 0 ? 0U - static_cast<std::uint32_t>(height) : static_cast<std::uint32_t>(height);
  header.topDown = height < 0;
  header.bits = Number16(bytes, 28);
  header.paletteSize = palette == 0 || palette > 256 ? 256 : palette;
  return header;
}

void PutBmpPixel(const BmpHeader& header, std::string_view bytes, std::string_view row,
                 std::size_t x, std::uint8_t* to) {
  if (header.bits == 8) {
    const std::uint32_t index = std::min<std::uint32_t>(ByteAt(row, x), header.paletteSize - 1);
    PutPixel(to, bytes.substr(std::min(bytes.size(), std::size_t{header.paletteAt} + index * 4)),
             3);
  } else {
    // The fourth byte of 32 bits is a filler in files without compression.
    PutPixel(to, row.substr(x * header.bits / 8), 3);
  }
}

}  // namespace

Result<Image> DecodeBmp(std::string_view bytes) {
  if (bytes.size() < kBmpHeaderSize) return Broken("BMP");
  const BmpHeader header = ReadBmpHeader(bytes);
  if (Status size = CheckImageSize(header.width, header.height, 4); !size) return size;
  const bool known = header.bits == 8 || header.bits == 24 || header.bits == 32;
  if (!known || Number32(bytes, 30) != 0)
    return Result<Image>::Failure("BMP pictures of this kind are not read.");
  const std::size_t stride = (std::size_t{header.width} * header.bits / 8 + 3) / 4 * 4;
  if (header.pixelsAt > bytes.size() || stride * header.height > bytes.size() - header.pixelsAt)
    return Broken("BMP");
  Image image{header.width, header.height, {}, {}};
  image.bytes.resize(image.PixelCount() * 4);
  for (std::size_t y = 0; y < image.height; ++y) {
    const std::size_t line = header.topDown ? y : image.height - 1 - y;
    const std::string_view row = bytes.substr(header.pixelsAt + line * stride, stride);
    for (std::size_t x = 0; x < image.width; ++x)
      PutBmpPixel(header, bytes, row, x, &image.bytes[(y * image.width + x) * 4]);
  }
  return image;
}

namespace {

constexpr std::size_t kTgaHeaderSize = 18;
constexpr std::uint8_t kTgaColor = 2;
constexpr std::uint8_t kTgaGray = 3;
constexpr std::uint8_t kTgaRuns = 8;  // added to the kind when coded in runs
constexpr std::uint8_t kTgaTopDown = 0x20;

// The pixels one after the other; `packet` counts what is left of the current run or plain stretch.
class TgaPixels {
 public:
  TgaPixels(std::string_view data, std::size_t channels, bool runs)
      : data_(data), channels_(channels), runs_(runs) {}
  // As many as the data can hold at most.
  std::size_t Most() const {
    constexpr std::size_t kLongestRun = 128;
    return runs_ ? data_.size() / (1 + channels_) * kLongestRun : data_.size() / channels_;
  }
  // False at the end of the data.
  bool Next(std::uint8_t* to) {
    if (runs_ && packet_ == 0 && !BeginPacket()) return false;
    if (data_.size() < channels_) return false;
    PutPixel(to, data_, channels_);
    if (runs_) --packet_;
    if (!repeats_ || packet_ == 0) data_.remove_prefix(channels_);
    return true;
  }

 private:
  bool BeginPacket() {
    if (data_.empty()) return false;
    const std::uint8_t head = ByteAt(data_, 0);
    data_.remove_prefix(1);
    repeats_ = (head & 0x80U) != 0;
    packet_ = (head & 0x7fU) + 1U;
    return true;
  }

  std::string_view data_;
  std::size_t channels_;
  bool runs_;
  bool repeats_ = false;
  std::uint32_t packet_ = 0;
};

}  // namespace

bool LooksLikeTga(std::string_view bytes) {
  if (bytes.size() <= kTgaHeaderSize || ByteAt(bytes, 1) != 0) return false;
  const std::uint8_t kind = ByteAt(bytes, 2);
  const std::uint8_t bits = ByteAt(bytes, 16);
  const bool color =
      (kind == kTgaColor || kind == kTgaColor + kTgaRuns) && (bits == 24 || bits == 32);
  const bool gray = (kind == kTgaGray || kind == kTgaGray + kTgaRuns) && bits == 8;
  return (color || gray) && (ByteAt(bytes, 17) & 0xc0U) == 0;
}

Result<Image> DecodeTga(std::string_view bytes) {
  Image image{Number16(bytes, 12), Number16(bytes, 14), {}, {}};
  if (Status size = CheckImageClaim(image.width, image.height, 4, bytes.size()); !size) return size;
  const std::size_t start = kTgaHeaderSize + ByteAt(bytes, 0);
  if (start > bytes.size()) return Broken("TGA");
  const bool topDown = (ByteAt(bytes, 17) & kTgaTopDown) != 0;
  TgaPixels pixels(bytes.substr(start), ByteAt(bytes, 16) / 8U, ByteAt(bytes, 2) >= kTgaRuns);
  if (image.PixelCount() > pixels.Most()) return Broken("TGA");
  image.bytes.resize(image.PixelCount() * 4);
  for (std::size_t y = 0; y < image.height; ++y) {
    const std::size_t line = topDown ? y : image.height - 1 - y;
    for (std::size_t x = 0; x < image.width; ++x) {
      if (!pixels.Next(&image.bytes[(line * image.width + x) * 4])) return Broken("TGA");
    }
  }
  return image;
}

}  // namespace engine
