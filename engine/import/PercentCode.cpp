#include "engine/import/PercentCode.h"

#include <algorithm>

namespace engine {
namespace {

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  const char lower = static_cast<char>(c | 0x20);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

}  // namespace

std::string PercentDecoded(const std::string& text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool complete = text[i] == '%' && i + 2 < text.size();
    const int high = complete ? HexDigit(text[i + 1]) : -1;
    const int low = complete ? HexDigit(text[i + 2]) : -1;
    const bool encoded = high >= 0 && low >= 0;
    result.push_back(encoded ? static_cast<char>(16 * high + low) : text[i]);
    if (encoded) i += 2;
  }
  return result;
}

std::string WithSlashes(std::string text) {
  std::replace(text.begin(), text.end(), '\\', '/');
  return text;
}

}  // namespace engine
