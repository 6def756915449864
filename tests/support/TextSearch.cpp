#include "tests/support/TextSearch.h"

#include <regex>

namespace tests {

std::vector<std::string> Matches(const std::string& text, const std::string& pattern) {
  std::vector<std::string> found;
  const std::regex regex(pattern);
  for (std::sregex_iterator it(text.begin(), text.end(), regex), end; it != end; ++it)
    found.push_back((*it)[1]);
  return found;
}

std::string WithReplaced(std::string text, const std::string& what, const std::string& by) {
  for (std::size_t at = text.find(what); at != std::string::npos;
       at = text.find(what, at + by.size()))
    text.replace(at, what.size(), by);
  return text;
}

}  // namespace tests
