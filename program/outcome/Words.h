// Words: how both programs say names and numbers to a person. Plain functions; any thread.
#pragma once

#include <string>
#include <vector>

namespace outcome {

// A name as it may stand in a line: control characters replaced, of a very long one the beginning.
std::string Shown(const std::string& name);
// Names in quotes for a sentence: "A", "B" and "C"; of many the first few and how many more.
std::string Listed(const std::vector<std::string>& names);
// "1 object", "3 objects".
std::string Counted(std::size_t count, const std::string& noun);

}  // namespace outcome
