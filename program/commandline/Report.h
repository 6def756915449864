// Report: what a verb found or did, for a person (lines on stdout) or for a program (one JSON
// object on stdout). Owned by the verb. Main thread.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "program/outcome/Words.h"

namespace commandline {

class Report {
 public:
  // A line for a person.
  void Line(std::string text) { lines_.push_back(std::move(text)); }
  // The object for a program; a verb fills its own keys.
  nlohmann::json& Json() { return json_; }
  // Prints one of the two.
  void Print(bool asJson) const;

 private:
  std::vector<std::string> lines_;
  nlohmann::json json_ = nlohmann::json::object();
};

// Text as valid UTF-8: bytes that are none are replaced. For JSON.
std::string ValidUtf8(const std::string& text);

nlohmann::json JsonOf(const std::vector<std::string>& texts);

using outcome::Counted;
using outcome::Listed;

}  // namespace commandline
