#include "program/outcome/Words.h"

#include "engine/dialog/TerminalText.h"

namespace outcome {

namespace {

// In columns of a terminal.
constexpr std::size_t kLongestName = 80;
constexpr std::size_t kMostNames = 6;

}  // namespace

std::string Shown(const std::string& name) {
  return engine::Shortened(engine::Printable(name), kLongestName);
}

// One name too many is shown rather than counted: "and 1 more" would take as much room.
std::string Listed(const std::vector<std::string>& names) {
  std::string text;
  const std::size_t shown = names.size() > kMostNames + 1 ? kMostNames : names.size();
  for (std::size_t i = 0; i < shown; ++i) {
    const bool last = i + 1 == names.size();
    text += (i == 0 ? "\"" : last ? " and \"" : ", \"") + Shown(names[i]) + "\"";
  }
  return shown < names.size() ? text + " and " + std::to_string(names.size() - shown) + " more"
                              : text;
}

std::string Counted(std::size_t count, const std::string& noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

}  // namespace outcome
