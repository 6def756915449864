#include "program/commandline/Report.h"

#include <iostream>

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

std::string Counted(std::size_t count, const std::string& noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

}  // namespace commandline
