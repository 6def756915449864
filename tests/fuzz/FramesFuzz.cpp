// Bytes from the pipe into which a child of the program writes, and it may write anything: however
// they arrive, the same frames come out of them, and none is longer than engine::kFrameLimit.
#include <cstdint>
#include <vector>

#include "engine/import/Frames.h"
#include "tests/fuzz/Require.h"

namespace {

using fuzz::Require;

struct Parsed {
  std::vector<engine::Frame> frames;
  bool damaged = false;
};

Parsed InPieces(std::string_view bytes, std::size_t piece) {
  engine::FrameParser parser;
  Parsed parsed;
  for (std::size_t at = 0; at < bytes.size() && !parser.Damaged(); at += piece) {
    parser.Feed(bytes.substr(at, piece));
    while (auto frame = parser.Next()) parsed.frames.push_back(std::move(*frame));
  }
  parsed.damaged = parser.Damaged();
  return parsed;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
  const Parsed whole = InPieces(bytes, size);
  const Parsed pieces = InPieces(bytes, data[0] % 16 + 1u);
  Require(whole.damaged == pieces.damaged && whole.frames.size() == pieces.frames.size());
  for (std::size_t i = 0; i < whole.frames.size(); ++i) {
    const engine::Frame& frame = whole.frames[i];
    Require(frame.bytes.size() <= engine::kFrameLimit);
    Require(frame.kind == pieces.frames[i].kind && frame.bytes == pieces.frames[i].bytes);
  }
  return 0;
}
