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
    if (!lines.back().empty() && lines.back().size() + 1 + word.size() > width)
      lines.emplace_back();
    lines.back() += (lines.back().empty() ? "" : " ") + word;
    start = end + 1;
  }
  return lines;
}

HelpFormat::HelpFormat(std::size_t width) : width_(width) {
  column_width(kColumn);
  label("SUBCOMMAND", "VERB");
  label("Positionals", "Given in this order");
}

std::string ValueWord(const CLI::Option& option) {
  if (option.get_type_size() == 0) return "";
  const std::string type = option.get_type_name();
  return type.substr(0, std::min(type.find(":{"), type.find(":UINT")));
}

std::string HelpFormat::make_option_opts(const CLI::Option* option) const {
  const std::string word = option->get_positional() ? "" : ValueWord(*option);
  return word.empty() ? "" : " " + word;
}

std::string HelpFormat::make_option_desc(const CLI::Option* option) const {
  const std::string usual = option->get_default_str();
  return Described(option->get_description() + (usual.empty() ? "" : " (default: " + usual + ")"));
}

// One empty line between groups, not two: the first one, of the options of every verb, has it
// already.
std::string HelpFormat::make_group(std::string group, bool positional,
                                   std::vector<const CLI::Option*> options) const {
  const bool isFirst = positional || group == "Options";
  const std::string text =
      CLI::Formatter::make_group(std::move(group), positional, std::move(options));
  return isFirst ? text : text.substr(1);
}

std::string HelpFormat::make_description(const CLI::App* app) const {
  return app->get_description() + ".\n\n";
}

std::string HelpFormat::make_subcommand(const CLI::App* verb) const {
  std::ostringstream out;
  CLI::detail::format_help(out, verb->get_display_name(true), Described(verb->get_description()),
                           kColumn);
  return out.str();
}

std::string HelpFormat::Described(const std::string& text) const {
  std::string lines;
  for (const std::string& line : Wrapped(text, width_ - kColumn))
    lines += (lines.empty() ? "" : "\n") + line;
  return lines;
}

}  // namespace commandline
