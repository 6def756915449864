// TerminalText: text for a terminal. Widths are counted in its columns: a Chinese letter takes two,
// a combining mark none. Pure functions, any thread.
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
// Cells row by row, lined up with one blank between columns, each row ending with a newline and
// without blanks before it.
std::string LinedUp(const std::vector<std::string>& cells, std::size_t columns);

}  // namespace engine
