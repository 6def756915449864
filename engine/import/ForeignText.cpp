#include "engine/import/ForeignText.h"

#include <algorithm>
#include <cstdint>

#include "engine/core/Utf8.h"

namespace engine {
namespace {

constexpr std::uint32_t kReplacement = 0xFFFD;

void Append(std::uint32_t code, std::string& text) {
  const auto tail = [&](unsigned shift) {
    text.push_back(static_cast<char>(0x80 | (code >> shift & 0x3F)));
  };
  if (code < 0x80) {
    text.push_back(static_cast<char>(code));
  } else if (code < 0x800) {
    text.push_back(static_cast<char>(0xC0 | code >> 6));
    tail(0);
  } else if (code < 0x10000) {
    text.push_back(static_cast<char>(0xE0 | code >> 12));
    tail(6);
    tail(0);
  } else {
    text.push_back(static_cast<char>(0xF0 | code >> 18));
    tail(12);
    tail(6);
    tail(0);
  }
}

// Behind the next tag, or the end of the text; a '>' in a quoted value of the tag ends nothing.
std::size_t EndOfNextTag(std::string_view xml, std::size_t from) {
  std::size_t at = xml.find('<', from);
  while (at != xml.npos) {
    at = xml.find_first_of("\"'>", at + 1);
    if (at == xml.npos || xml[at] == '>') break;
    at = xml.find(xml[at], at + 1);
  }
  return at == xml.npos ? xml.size() : at + 1;
}

}  // namespace

bool IsUtf8(std::string_view text) {
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t bytes = CharacterBytes(text, at);
    if (bytes == 1 && static_cast<unsigned char>(text[at]) >= 0x80) return false;
    at += bytes;
  }
  return true;
}

// Every byte is a character of Latin-1, so nothing can fail. A text that mixes both is shown a
// little wrong rather than lost.
std::string Utf8Of(std::string_view text) {
  if (IsUtf8(text)) return std::string(text);
  std::string result;
  for (const char c : text) Append(static_cast<unsigned char>(c), result);
  return result;
}

bool IsMarkedUtf16(std::string_view bytes) {
  return bytes.substr(0, 2) == "\xFF\xFE" || bytes.substr(0, 2) == "\xFE\xFF";
}

std::string FromUtf16(std::string_view bytes) {
  // Where the lower byte of each pair stands, by the order of the mark's bytes.
  const std::size_t low = bytes.substr(0, 1) == "\xFF" ? 0 : 1;
  const auto unit = [&](std::size_t at) -> std::uint32_t {
    return static_cast<unsigned char>(bytes[at + low]) |
           static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[at + 1 - low])) << 8;
  };
  std::string text;
  for (std::size_t at = 2; at + 1 < bytes.size(); at += 2) {
    std::uint32_t code = unit(at);
    const bool isHalf = code >= 0xD800 && code < 0xE000;
    const std::uint32_t next = isHalf && at + 3 < bytes.size() ? unit(at + 2) : 0;
    if (isHalf && code < 0xDC00 && next >= 0xDC00 && next < 0xE000) {
      code = 0x10000 + ((code - 0xD800) << 10) + (next - 0xDC00);
      at += 2;
    } else if (isHalf) {
      code = kReplacement;
    }
    Append(code, text);
  }
  return text;
}

std::string WithoutLeadingBlanks(std::string_view xml) {
  std::string result;
  result.reserve(xml.size());
  for (std::size_t at = 0; at < xml.size();) {
    const std::size_t end = EndOfNextTag(xml, at);
    result.append(xml.substr(at, end - at));
    at = std::min(xml.find_first_not_of(" \t\r\n", end), xml.size());
  }
  return result;
}

std::string WithNamedCameras(std::string_view xml) {
  constexpr std::string_view kOpening = "<camera ";
  constexpr std::string_view kId = " id=";
  std::string result;
  std::size_t done = 0;
  for (std::size_t at = xml.find(kOpening); at != xml.npos; at = xml.find(kOpening, at + 1)) {
    const std::string_view tag = xml.substr(at, xml.find('>', at) - at);
    const std::size_t id = tag.find(kId);
    if (id == tag.npos || tag.find(" name=") != tag.npos) continue;
    const std::size_t open = id + kId.size();
    const std::size_t close = open < tag.size() ? tag.find(tag[open], open + 1) : tag.npos;
    if (close == tag.npos) continue;
    result.append(xml.substr(done, at + close + 1 - done)).append(" name=");
    result.append(tag.substr(open, close + 1 - open));
    done = at + close + 1;
  }
  return result.append(xml.substr(done));
}

}  // namespace engine
