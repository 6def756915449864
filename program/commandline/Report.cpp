#include "program/commandline/Report.h"

#include <iostream>

#include "program/commandline/Terminal.h"

namespace commandline {

void Report::Print(bool asJson) const {
  if (asJson) {
    std::cout << json_.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
    return;
  }
  for (const std::string& line : lines_) std::cout << line << '\n';
}

std::string ValidUtf8(const std::string& text) {
  const std::string quoted = nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
  return nlohmann::json::parse(quoted).get<std::string>();
}

std::string Listed(const std::vector<std::string>& names) {
  constexpr std::size_t kMost = 6;
  std::string text;
  const std::size_t shown = names.size() > kMost + 1 ? kMost : names.size();
  for (std::size_t i = 0; i < shown; ++i) {
    const bool last = i + 1 == names.size();
    text += (i == 0 ? "\"" : last ? " and \"" : ", \"") + Shown(names[i]) + "\"";
  }
  return shown < names.size() ? text + " and " + std::to_string(names.size() - shown) + " more" : text;
}

nlohmann::json JsonOf(const std::vector<std::string>& texts) {
  nlohmann::json all = nlohmann::json::array();
  for (const std::string& text : texts) all.push_back(ValidUtf8(text));
  return all;
}

std::string Counted(std::size_t count, const std::string& noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

}  // namespace commandline
