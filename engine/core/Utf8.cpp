#include "engine/core/Utf8.h"

#include <utf8proc.h>

namespace engine {

std::size_t CharacterBytes(std::string_view text, std::size_t at) {
  const auto* bytes = reinterpret_cast<const utf8proc_uint8_t*>(text.data() + at);
  if (bytes[0] < 0x80) return 1;
  utf8proc_int32_t letter = -1;
  const utf8proc_ssize_t length =
      utf8proc_iterate(bytes, static_cast<utf8proc_ssize_t>(text.size() - at), &letter);
  return length > 0 ? static_cast<std::size_t>(length) : 1;
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

void CutTo(std::string& text, std::size_t bytes) {
  if (text.size() <= bytes) return;
  while (bytes > 0 && (static_cast<unsigned char>(text[bytes]) & 0xC0) == 0x80) --bytes;
  text.resize(bytes);
}

}  // namespace engine
