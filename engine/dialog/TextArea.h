// TextArea: a rectangle of text for a terminal, and ways to put such rectangles together. Widths
// are counted in terminal columns: a Chinese letter takes two, a combining mark none. Values; any
// thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace engine {

// Columns that a printable text takes.
std::size_t DisplayWidth(std::string_view utf8);
// The text with control characters and bytes that are no UTF-8 replaced by U+FFFD.
std::string Printable(std::string_view utf8);
// Filled up with blanks on the right; a wider text is left as it is.
std::string PadRight(std::string text, std::size_t width);
// At most `width` columns (1 or more), the last one an ellipsis where something was left out.
std::string Shortened(std::string_view utf8, std::size_t width);
std::string Repeated(std::string_view piece, std::size_t count);

struct TextArea {
  std::vector<std::string> lines;
  std::size_t width = 0;

  static TextArea Of(std::string line);
  void AddLine(std::string line);
  // Adds the lines of `other` below, moved right by `indent` columns.
  void AddBelow(const TextArea& other, std::size_t indent = 0);
  std::size_t Height() const { return lines.size(); }
};

// Blanks around a block.
TextArea Surrounded(const TextArea& block, std::size_t left, std::size_t top, std::size_t right,
                    std::size_t bottom);
// A thin frame with one blank left and right and, where it is not empty, a title in the upper line.
TextArea Framed(const TextArea& block, const std::string& title);
// Blocks row by row in `columns` columns, lined up, with `gapX` columns and `gapY` lines between
// them.
TextArea InGrid(const std::vector<TextArea>& blocks, std::size_t columns, std::size_t gapX,
                std::size_t gapY);

// The lines joined, each with a newline, blanks at line ends left out.
std::string Joined(const TextArea& block);

}  // namespace engine
