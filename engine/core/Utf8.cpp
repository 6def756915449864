#include "engine/core/Utf8.h"

namespace engine {

namespace {

bool IsBetween(unsigned char byte, unsigned low, unsigned high) {
  return byte >= low && byte <= high;
}

struct Sequence {
  std::size_t bytes;
  unsigned secondLow;
  unsigned secondHigh;
};

// The well-formed sequences by their first byte: table 3-7 of the Unicode standard.
Sequence SequenceOf(unsigned char first) {
  if (IsBetween(first, 0xC2, 0xDF)) return {2, 0x80, 0xBF};
  if (first == 0xE0) return {3, 0xA0, 0xBF};
  if (first == 0xED) return {3, 0x80, 0x9F};
  if (IsBetween(first, 0xE1, 0xEF)) return {3, 0x80, 0xBF};
  if (first == 0xF0) return {4, 0x90, 0xBF};
  if (IsBetween(first, 0xF1, 0xF3)) return {4, 0x80, 0xBF};
  if (first == 0xF4) return {4, 0x80, 0x8F};
  return {1, 0, 0};
}

}  // namespace

std::size_t CharacterBytes(std::string_view text, std::size_t at) {
  const auto byteAt = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  if (byteAt(at) < 0x80) return 1;
  const Sequence sequence = SequenceOf(byteAt(at));
  if (sequence.bytes == 1 || text.size() - at < sequence.bytes) return 1;
  if (!IsBetween(byteAt(at + 1), sequence.secondLow, sequence.secondHigh)) return 1;
  for (std::size_t i = 2; i < sequence.bytes; ++i) {
    if (!IsBetween(byteAt(at + i), 0x80, 0xBF)) return 1;
  }
  return sequence.bytes;
}

std::size_t CountCharacters(std::string_view text) {
  std::size_t count = 0;
  for (std::size_t at = 0; at < text.size(); at += CharacterBytes(text, at)) ++count;
  return count;
}

std::size_t ByteOffset(std::string_view text, std::size_t index) {
  std::size_t at = 0;
  for (; index > 0 && at < text.size(); --index) at += CharacterBytes(text, at);
  return at;
}

}  // namespace engine
