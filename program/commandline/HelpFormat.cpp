#include "program/commandline/HelpFormat.h"

namespace commandline {

namespace {

constexpr std::size_t kColumn = 26;

}  // namespace

std::vector<std::string> Wrapped(const std::string& text, std::size_t width) {
  std::vector<std::string> lines{""};
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = std::min(text.find(' ', start), text.size());
    const std::string word = text.substr(start, end - start);
    if (!lines.back().empty() && lines.back().size() + 1 + word.size() > width) lines.emplace_back();
    lines.back() += (lines.back().empty() ? "" : " ") + word;
    start = end + 1;
  }
  return lines;
}

HelpFormat::HelpFormat(std::size_t width) : width_(width) {
  column_width(kColumn);
  label("SUBCOMMAND", "VERB");
}

// The word for a value without the checks behind it; the description says what is allowed.
std::string HelpFormat::make_option_opts(const CLI::Option* option) const {
  if (option->get_type_size() == 0 || option->get_positional()) return "";
  const std::string type = option->get_type_name();
  return " " + type.substr(0, type.find(":{"));
}

std::string HelpFormat::make_option_desc(const CLI::Option* option) const {
  const std::string usual = option->get_default_str();
  return Described(option->get_description() + (usual.empty() ? "" : " (default: " + usual + ")"));
}

std::string HelpFormat::make_description(const CLI::App* app) const { return app->get_description() + ".\n\n"; }

std::string HelpFormat::make_subcommand(const CLI::App* verb) const {
  std::ostringstream out;
  CLI::detail::format_help(out, verb->get_display_name(true), Described(verb->get_description()), kColumn);
  return out.str();
}

std::string HelpFormat::Described(const std::string& text) const {
  std::string lines;
  for (const std::string& line : Wrapped(text, width_ - kColumn)) lines += (lines.empty() ? "" : "\n") + line;
  return lines;
}

}  // namespace commandline
