#include "engine/dialog/TerminalText.h"

#include <utf8proc.h>

#include <algorithm>

namespace engine {

namespace {

constexpr std::string_view kReplacement = "\xef\xbf\xbd";

struct Letter {
  utf8proc_int32_t value;  // negative: a byte that starts none
  std::string_view bytes;
};

// The first letter of a text that is not empty; a byte that starts none is one broken letter.
Letter FirstLetter(std::string_view text) {
  const auto* bytes = reinterpret_cast<const utf8proc_uint8_t*>(text.data());
  Letter letter{-1, text.substr(0, 1)};
  const utf8proc_ssize_t length =
      utf8proc_iterate(bytes, static_cast<utf8proc_ssize_t>(text.size()), &letter.value);
  if (length > 1) letter.bytes = text.substr(0, static_cast<std::size_t>(length));
  return letter;
}

// Control characters and broken letters are shown as a replacement, which takes one column.
std::size_t WidthOf(utf8proc_int32_t letter) {
  // Below the first combining mark all letters take one column.
  if (letter < 0x300) return 1;
  return static_cast<std::size_t>(utf8proc_charwidth(letter));
}

bool IsPrintable(utf8proc_int32_t letter) {
  const bool control = letter < 0x20 || (letter >= 0x7f && letter < 0xa0);
  // These would show the rest of a line backwards, and so another name than the one that is there.
  const bool turnsDirection =
      (letter >= 0x202a && letter <= 0x202e) || (letter >= 0x2066 && letter <= 0x2069);
  return letter >= 0 && !control && !turnsDirection && letter != 0x2028 && letter != 0x2029;
}

}  // namespace

std::size_t DisplayWidth(std::string_view utf8) {
  std::size_t width = 0;
  while (!utf8.empty()) {
    const Letter letter = FirstLetter(utf8);
    width += WidthOf(letter.value);
    utf8.remove_prefix(letter.bytes.size());
  }
  return width;
}

std::string Printable(std::string_view utf8) {
  std::string text;
  while (!utf8.empty()) {
    const Letter letter = FirstLetter(utf8);
    text += IsPrintable(letter.value) ? letter.bytes : kReplacement;
    utf8.remove_prefix(letter.bytes.size());
  }
  return text;
}

std::string PadRight(std::string text, std::size_t width) {
  const std::size_t has = DisplayWidth(text);
  if (has < width) text.append(width - has, ' ');
  return text;
}

std::string Shortened(std::string_view utf8, std::size_t width) {
  if (DisplayWidth(utf8) <= width) return std::string(utf8);
  std::string text;
  for (std::size_t used = 0; !utf8.empty();) {
    const Letter letter = FirstLetter(utf8);
    used += WidthOf(letter.value);
    if (used > width - 1) break;
    text += letter.bytes;
    utf8.remove_prefix(letter.bytes.size());
  }
  return text + "…";
}

std::string LinedUp(const std::vector<std::string>& cells, std::size_t columns) {
  std::vector<std::size_t> widths(columns, 0);
  for (std::size_t i = 0; i < cells.size(); ++i)
    widths[i % columns] = std::max(widths[i % columns], DisplayWidth(cells[i]));
  std::string text;
  for (std::size_t i = 0; i < cells.size(); i += columns) {
    std::string line;
    for (std::size_t column = 0; column < columns && i + column < cells.size(); ++column) {
      if (column > 0) line += ' ';
      line += PadRight(cells[i + column], widths[column]);
    }
    text += line.substr(0, line.find_last_not_of(' ') + 1) + '\n';
  }
  return text;
}

}  // namespace engine
