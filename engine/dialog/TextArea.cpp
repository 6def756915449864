#include "engine/dialog/TextArea.h"

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
  if (letter < 0x300) return 1;
  return static_cast<std::size_t>(utf8proc_charwidth(letter));
}

bool IsPrintable(utf8proc_int32_t letter) {
  const bool control = letter < 0x20 || (letter >= 0x7f && letter < 0xa0);
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

std::string Repeated(std::string_view piece, std::size_t count) {
  std::string text;
  for (std::size_t i = 0; i < count; ++i) text += piece;
  return text;
}

TextArea TextArea::Of(std::string line) {
  TextArea block;
  block.AddLine(std::move(line));
  return block;
}

void TextArea::AddLine(std::string line) {
  width = std::max(width, DisplayWidth(line));
  lines.push_back(std::move(line));
}

void TextArea::AddBelow(const TextArea& other, std::size_t indent) {
  for (const std::string& line : other.lines) lines.push_back(std::string(indent, ' ') + line);
  width = std::max(width, other.width + indent);
}

TextArea Surrounded(const TextArea& block, std::size_t left, std::size_t top, std::size_t right,
                    std::size_t bottom) {
  TextArea result;
  result.lines.assign(top, std::string());
  result.AddBelow(block, left);
  result.lines.insert(result.lines.end(), bottom, std::string());
  result.width = left + block.width + right;
  return result;
}

TextArea Framed(const TextArea& block, const std::string& title) {
  const std::string label = title.empty() ? "" : "─ " + title + " ";
  const std::size_t inner = std::max(block.width + 2, DisplayWidth(label) + 1);
  TextArea result;
  result.AddLine("┌" + label + Repeated("─", inner - DisplayWidth(label)) + "┐");
  for (const std::string& line : block.lines)
    result.AddLine("│ " + PadRight(line, inner - 1) + "│");
  result.AddLine("└" + Repeated("─", inner) + "┘");
  return result;
}

namespace {

// One row of a grid: blocks side by side, each as wide as its column.
void AddGridRow(TextArea& grid, const TextArea* blocks, std::size_t count,
                const std::vector<std::size_t>& widths, std::size_t gap) {
  std::size_t height = 0;
  for (std::size_t i = 0; i < count; ++i) height = std::max(height, blocks[i].Height());
  for (std::size_t y = 0; y < height; ++y) {
    std::string line;
    for (std::size_t i = 0; i < count; ++i) {
      if (i > 0) line.append(gap, ' ');
      line += PadRight(y < blocks[i].Height() ? blocks[i].lines[y] : std::string(), widths[i]);
    }
    grid.AddLine(std::move(line));
  }
}

}  // namespace

TextArea InGrid(const std::vector<TextArea>& blocks, std::size_t columns, std::size_t gapX,
                std::size_t gapY) {
  std::vector<std::size_t> widths(columns, 0);
  for (std::size_t i = 0; i < blocks.size(); ++i)
    widths[i % columns] = std::max(widths[i % columns], blocks[i].width);
  TextArea grid;
  for (std::size_t i = 0; i < blocks.size(); i += columns) {
    if (i > 0) grid.lines.insert(grid.lines.end(), gapY, std::string());
    AddGridRow(grid, &blocks[i], std::min(columns, blocks.size() - i), widths, gapX);
  }
  return grid;
}

std::string Joined(const TextArea& block) {
  std::string text;
  for (const std::string& line : block.lines) {
    text += line.substr(0, line.find_last_not_of(' ') + 1);
    text += '\n';
  }
  return text;
}

}  // namespace engine
