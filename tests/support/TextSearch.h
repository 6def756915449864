// Searching in texts. The standard library's regular expressions cost each file that includes them
// seconds to compile: here they are compiled once for all tests.
#pragma once

#include <string>
#include <vector>

namespace tests {

// The first group of the pattern (in the syntax of ECMAScript) at each match, in order.
std::vector<std::string> Matches(const std::string& text, const std::string& pattern);
// The text with each `what`, taken literally, replaced.
std::string WithReplaced(std::string text, const std::string& what, const std::string& by);

}  // namespace tests
