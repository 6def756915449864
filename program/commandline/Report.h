// Report: what a verb found or did, for a person (lines on stdout) or for a program (one JSON object on stdout). Owned by the
// verb. Main thread.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

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

// Names in quotes for a sentence: "A", "B" and "C"; of many the first few and how many more.
std::string Listed(const std::vector<std::string>& names);
nlohmann::json JsonOf(const std::vector<std::string>& texts);

// "1 object", "3 objects".
std::string Counted(std::size_t count, const std::string& noun);

}  // namespace commandline
