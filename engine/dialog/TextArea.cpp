#include "engine/dialog/TextArea.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "engine/core/Utf8.h"

namespace engine {

namespace {

struct Span {
  char32_t first;
  char32_t last;
};

// The common ranges of Unicode Standard Annex 11 (wide) and of the general category Mn (none).
constexpr std::array kNoWidth = {Span{0x300, 0x36f},   Span{0x1ab0, 0x1aff}, Span{0x1dc0, 0x1dff},
                                 Span{0x200b, 0x200f}, Span{0x20d0, 0x20ff}, Span{0xfe00, 0xfe0f},
                                 Span{0xfe20, 0xfe2f}};
constexpr std::array kWide = {Span{0x1100, 0x115f},   Span{0x2e80, 0x303e},  Span{0x3041, 0xa4cf},
                              Span{0xac00, 0xd7a3},   Span{0xf900, 0xfaff},  Span{0xfe30, 0xfe6f},
                              Span{0xff00, 0xff60},   Span{0xffe0, 0xffe6},  Span{0x1f300, 0x1f64f},
                              Span{0x1f900, 0x1f9ff}, Span{0x20000, 0x3fffd}};
constexpr char32_t kBroken = 0xffffffff;
constexpr std::string_view kReplacement = "\xef\xbf\xbd";

template <class Spans>
bool IsIn(const Spans& spans, char32_t letter) {
  return std::any_of(spans.begin(), spans.end(),
                     [&](const Span& s) { return s.first <= letter && letter <= s.last; });
}

std::size_t WidthOf(char32_t letter) {
  if (letter < 0x300) return 1;
  return IsIn(kNoWidth, letter) ? 0 : IsIn(kWide, letter) ? 2 : 1;
}

struct Letter {
  char32_t value;
  std::string_view bytes;
};

// The first letter of a text that is not empty; a byte that starts none is one broken letter.
Letter FirstLetter(std::string_view text) {
  const std::size_t length = CharacterBytes(text, 0);
  const unsigned lead = static_cast<unsigned char>(text[0]);
  if (length == 1) return {lead < 0x80 ? char32_t{lead} : kBroken, text.substr(0, 1)};
  char32_t value = lead & (0x7fU >> length);
  for (const char byte : text.substr(1, length - 1))
    value = value << 6U | (static_cast<unsigned char>(byte) & 0x3fU);
  return {value, text.substr(0, length)};
}

bool IsPrintable(char32_t letter) {
  const bool control = letter < 0x20 || (letter >= 0x7f && letter < 0xa0);
  const bool turnsDirection =
      (letter >= 0x202a && letter <= 0x202e) || (letter >= 0x2066 && letter <= 0x2069);
  return letter != kBroken && !control && !turnsDirection && letter != 0x2028 && letter != 0x2029;
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
