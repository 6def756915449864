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
  const std::string quoted =
      nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
  return nlohmann::json::parse(quoted).get<std::string>();
}

nlohmann::json JsonOf(const std::vector<std::string>& texts) {
  nlohmann::json all = nlohmann::json::array();
  for (const std::string& text : texts) all.push_back(ValidUtf8(text));
  return all;
}

}  // namespace commandline
