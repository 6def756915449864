// Image files of all kinds: whatever the bytes, there comes out a picture of the size it says or a
// message. What was read can be written, and reads back as the same pixels. Start it with a folder
// of its own for what it finds, and tests/render/pictures as the corpus.
#include <cstdint>

#include "engine/render/Image.h"
#include "tests/fuzz/Require.h"

namespace {

using fuzz::Require;

void WriteAndReadBack(const engine::Image& image) {
  const auto file = engine::EncodePng(image);
  Require(file.Ok());
  const auto again = engine::DecodeImage(file.Value());
  Require(again.Ok() && again.Value().bytes == image.bytes);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto image = engine::DecodeImage({reinterpret_cast<const char*>(data), size});
  Require(image.Ok() == image.Message().empty());
  if (!image) return 0;
  const engine::Image bytes = engine::ToBytes(image.Value());
  Require(bytes.bytes.size() == bytes.PixelCount() * 4);
  // Large pictures would only make each try slow.
  if (bytes.PixelCount() < 4096) WriteAndReadBack(bytes);
  return 0;
}
