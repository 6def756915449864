#include "engine/render/ExrHead.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "engine/render/Codecs.h"

namespace engine {

namespace {

constexpr std::size_t kHeadsAt = 8;  // behind magic number and version
constexpr std::uint32_t kSeveralParts = 0x1000;

// Lines in one chunk, by the number of the compression; the last is for unknown ones.
constexpr std::array<std::uint64_t, 11> kLinesPacked = {1, 1, 1, 16, 32, 16, 32, 32, 32, 256, 256};
constexpr std::array<std::uint64_t, 3> kPixelBytes = {4, 2, 4};  // whole, half, float

struct Broken {};

class Bytes {
 public:
  explicit Bytes(std::string_view bytes) : bytes_(bytes) {}

  bool IsAtEnd() const { return bytes_.empty(); }
  std::string_view Take(std::size_t count) {
    if (count > bytes_.size()) throw Broken();
    const std::string_view taken = bytes_.substr(0, count);
    bytes_.remove_prefix(count);
    return taken;
  }
  std::uint32_t Number() {
    const std::string_view four = Take(4);
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < 4; ++i)
      number |= std::uint32_t{static_cast<std::uint8_t>(four[i])} << (8 * i);
    return number;
  }
  std::int64_t SignedNumber() { return static_cast<std::int32_t>(Number()); }
  std::string_view Name() {
    const std::size_t end = bytes_.find('\0');
    if (end == std::string_view::npos) throw Broken();
    const std::string_view name = Take(end);
    Take(1);
    return name;
  }

 private:
  std::string_view bytes_;
};

struct Head {
  std::uint64_t width = 0;
  std::uint64_t height = 0;
  std::uint64_t pixelBytes = 0;  // of all channels
  std::uint64_t lines = kLinesPacked.back();
  std::uint64_t tileWidth = 0;  // 0 where it is in lines
  std::uint64_t tileHeight = 0;
};

void ReadWindow(Bytes in, Head& head) {
  const std::int64_t left = in.SignedNumber();
  const std::int64_t top = in.SignedNumber();
  const std::int64_t right = in.SignedNumber();
  const std::int64_t bottom = in.SignedNumber();
  if (right < left || bottom < top) throw Broken();
  head.width = static_cast<std::uint64_t>(right - left + 1);
  head.height = static_cast<std::uint64_t>(bottom - top + 1);
}

void ReadChannels(Bytes in, Head& head) {
  while (!in.Name().empty()) {
    const std::uint32_t kind = in.Number();
    if (kind >= kPixelBytes.size()) throw Broken();
    head.pixelBytes += kPixelBytes[kind];
    in.Take(12);
  }
}

// Lists of texts say the length of each.
void ReadTexts(Bytes in) {
  while (!in.IsAtEnd()) in.Take(in.Number());
}

void ReadAttribute(std::string_view name, std::string_view type, std::string_view value,
                   Head& head) {
  Bytes in(value);
  if (name == "dataWindow") ReadWindow(in, head);
  if (name == "channels") ReadChannels(in, head);
  if (name == "compression")
    head.lines = kLinesPacked[std::min<std::size_t>(static_cast<std::uint8_t>(in.Take(1)[0]),
                                                    kLinesPacked.size() - 1)];
  if (name == "tiles") {
    head.tileWidth = in.Number();
    head.tileHeight = in.Number();
    if (head.tileWidth == 0 || head.tileHeight == 0) throw Broken();
  }
  if (type == "stringvector") ReadTexts(in);
  if (type != "preview") return;
  const std::uint64_t width = in.Number();
  if (width * in.Number() != (value.size() - 8) / 4) throw Broken();
}

// False where no further head begins.
bool ReadHead(Bytes& in, Head& head) {
  std::string_view name = in.Name();
  if (name.empty()) return false;
  for (; !name.empty(); name = in.Name()) {
    const std::string_view type = in.Name();
    ReadAttribute(name, type, in.Take(in.Number()), head);
  }
  return true;
}

// Fails where the picture or one of its chunks asks for more memory than a file of that size may,
// or where the file is too short to hold the offsets of all its chunks.
Status CheckHead(const Head& head, std::size_t fileBytes) {
  if (Status size = CheckImageClaim(head.width, head.height, sizeof(float) * 4, fileBytes); !size)
    return size;
  const auto parts = [](std::uint64_t whole, std::uint64_t part) {
    return (whole + part - 1) / part;
  };
  const bool isTiled = head.tileWidth > 0;
  const std::uint64_t lines = isTiled ? head.tileHeight : head.lines;
  const std::uint64_t chunks =
      parts(head.height, lines) * (isTiled ? parts(head.width, head.tileWidth) : 1);
  const std::uint64_t across = isTiled ? std::max(head.width, head.tileWidth) : head.width;
  const std::uint64_t most = MemoryForImage(fileBytes);
  const bool fits = across <= kLargestImageSide && lines <= kLargestImageSide &&
                    head.pixelBytes <= most / across / lines && chunks <= fileBytes / 8;
  return fits ? Status()
              : Status::Failure("The OpenEXR picture claims more than its " +
                                std::to_string(fileBytes) + " bytes can hold.");
}

}  // namespace

Status CheckExrClaims(std::string_view bytes) {
  try {
    Bytes in(bytes);
    in.Take(kHeadsAt - 4);
    const bool hasSeveral = (in.Number() & kSeveralParts) != 0;
    for (bool more = true; more;) {
      Head head;
      more = ReadHead(in, head);
      if (!more) break;
      if (Status claims = CheckHead(head, bytes.size()); !claims) return claims;
      more = hasSeveral;
    }
    return {};
  } catch (const Broken&) {
    return Status::Failure("The OpenEXR picture cannot be read (its head is damaged).");
  }
}

}  // namespace engine
