// One declaration of the verbs feeds three texts: help on the screen, the manual page (roff,
// man(7)), and the tables that the completion of the shell reads. Everything is taken from the
// library's options; the values that a check allows stand in its type name as "WORD:{A,B}".
#include "program/commandline/HelpText.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>

#include "program/commandline/Terminal.h"

namespace commandline {

namespace {

// Where descriptions begin.
constexpr std::size_t kColumn = 26;

// The word for an option's value, as "DIR"; empty for a flag. The checks behind it are left to the
// description.
std::string ValueWord(const CLI::Option& option) {
  if (option.get_type_size() == 0) return "";
  const std::string type = option.get_type_name();
  return type.substr(0, std::min(type.find(":{"), type.find(":UINT")));
}

// Options without a description are kept for old scripts only.
bool IsHidden(const CLI::Option& option) { return option.get_description().empty(); }

// "OUT", "NAMES..." where several are taken.
std::string Place(const CLI::Option& positional) {
  return positional.get_name() + (positional.get_expected_max() > 1 ? "..." : "");
}

// Overrides what the library would print otherwise: types of values, numbers of arguments,
// wrapping.
class HelpFormat : public CLI::Formatter {
 public:
  explicit HelpFormat(std::size_t width);

  std::string make_option_opts(const CLI::Option* option) const override;
  std::string make_option_desc(const CLI::Option* option) const override;
  std::string make_group(std::string group, bool positional,
                         std::vector<const CLI::Option*> options) const override;
  std::string make_option_usage(const CLI::Option* option) const override;
  std::string make_description(const CLI::App* app) const override;
  std::string make_footer(const CLI::App* app) const override;
  std::string make_subcommand(const CLI::App* verb) const override;

 private:
  std::string Described(const std::string& text) const;

  std::size_t width_;
};

HelpFormat::HelpFormat(std::size_t width) : width_(width) {
  column_width(kColumn);
  label("SUBCOMMAND", "VERB");
  label("Positionals", "Given in this order");
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
  std::erase_if(options, [](const CLI::Option* option) { return IsHidden(*option); });
  const std::string text =
      CLI::Formatter::make_group(std::move(group), positional, std::move(options));
  return isFirst ? text : text.substr(1);
}

std::string HelpFormat::make_option_usage(const CLI::Option* option) const {
  return option->get_required() ? Place(*option) : "[" + Place(*option) + "]";
}

// Commands to be typed stay on one line.
std::string HelpFormat::make_footer(const CLI::App* app) const {
  std::string text;
  std::istringstream lines(app->get_footer());
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("  ")) {
      text += line + "\n";
      continue;
    }
    for (const std::string& piece : Wrapped(line, width_)) text += piece + "\n";
  }
  return text;
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

// Plain text in the language of manual pages: hyphens that can be copied, and no line that it would
// take for a command.
std::string Plain(const std::string& text) {
  std::string plain;
  for (const char c : text) {
    if (plain.empty() && (c == '.' || c == '\'')) plain += "\\&";
    if (c == '\\') {
      plain += "\\e";
    } else {
      plain += c == '-' ? std::string("\\-") : std::string(1, c);
    }
  }
  return plain;
}

// The first two characters, a comma and a blank, are left out.
std::string OptionNames(const CLI::Option& option) {
  std::string names;
  for (const std::string& name : option.get_snames()) names += ", \\fB\\-" + name + "\\fR";
  for (const std::string& name : option.get_lnames())
    names += ", \\fB\\-\\-" + Plain(name) + "\\fR";
  const std::string value = ValueWord(option);
  return names.substr(2) + (value.empty() ? "" : " \\fI" + Plain(value) + "\\fR");
}

void DescribeOption(std::ostream& out, const CLI::Option& option) {
  const std::string usual = option.get_default_str();
  out << ".TP\n"
      << (option.get_positional() ? "\\fI" + Plain(option.get_name()) + "\\fR"
                                  : OptionNames(option))
      << '\n';
  out << Plain(option.get_description() + (usual.empty() ? "" : " (default: " + usual + ")"))
      << ".\n";
}

// Lines that are indented are commands to be typed.
void DescribeFooter(std::ostream& out, const std::string& footer) {
  bool typed = false;
  std::istringstream lines(footer);
  for (std::string line; std::getline(lines, line);) {
    const bool isTyped = line.rfind("  ", 0) == 0;
    if (isTyped != typed) out << (isTyped ? ".PP\n.EX\n" : ".EE\n");
    if (!isTyped && (!line.empty() || typed)) out << ".PP\n";
    if (!line.empty()) out << Plain(line) << '\n';
    typed = isTyped;
  }
  if (typed) out << ".EE\n";
}

std::vector<const CLI::Option*> Positionals(const CLI::App& verb) {
  return verb.get_options([](const CLI::Option* option) { return option->get_positional(); });
}

std::vector<const CLI::Option*> NamedOptions(const CLI::App& verb) {
  return verb.get_options(
      [](const CLI::Option* option) { return !option->get_positional() && !IsHidden(*option); });
}

std::string Usage(const CLI::App& verb) {
  std::string usage = verb.get_name();
  for (const CLI::Option* option : Positionals(verb)) {
    usage += option->get_required() ? " " + Place(*option) : " [" + Place(*option) + "]";
  }
  return usage;
}

// "-n" and "--name".
std::vector<std::string> Names(const CLI::Option& option) {
  std::vector<std::string> names;
  for (const std::string& name : option.get_snames()) names.push_back("-" + name);
  for (const std::string& name : option.get_lnames()) names.push_back("--" + name);
  return names;
}

// The values that a check of the option allows, as "on off"; empty where they are not a list.
std::string AllowedValues(const CLI::Option& option) {
  const std::string type = option.get_type_name();
  const std::size_t start = type.find(":{");
  if (start == std::string::npos) return "";
  std::string values = type.substr(start + 2, type.find('}', start) - start - 2);
  std::replace(values.begin(), values.end(), ',', ' ');
  return values;
}

// A line of bash; keys and values have no quotes in them.
void Assign(std::ostream& out, const std::string& table, const std::string& key,
            const std::string& value) {
  out << "_stagemarks_" << table << "['" << key << "']='" << value << "'\n";
}

// Per verb: options, places of plain words, and for options with a value its word and what is
// allowed.
void TablesOfVerb(std::ostream& out, const CLI::App& verb) {
  std::string all;
  for (const CLI::Option* option : NamedOptions(verb)) {
    for (const std::string& name : Names(*option)) {
      all += " " + name;
      const std::string key = verb.get_name() + " " + name;
      if (!ValueWord(*option).empty()) Assign(out, "value", key, ValueWord(*option));
      if (!AllowedValues(*option).empty()) Assign(out, "allowed", key, AllowedValues(*option));
    }
  }
  std::string places;
  for (const CLI::Option* option : Positionals(verb)) {
    places += " " + Place(*option);
    if (!AllowedValues(*option).empty())
      Assign(out, "allowed", verb.get_name() + " " + Place(*option), AllowedValues(*option));
  }
  Assign(out, "options", verb.get_name(), all);
  Assign(out, "places", verb.get_name(), places);
}

}  // namespace

std::shared_ptr<CLI::FormatterBase> MakeHelpFormat(std::size_t width) {
  return std::make_shared<HelpFormat>(width);
}

std::string TextForManualPage(const CLI::App& app) {
  std::ostringstream out;
  for (const CLI::App* verb : app.get_subcommands({})) {
    out << ".SS stagemarks " << Plain(Usage(*verb)) << '\n'
        << Plain(verb->get_description()) << ".\n";
    for (const CLI::Option* option : Positionals(*verb)) DescribeOption(out, *option);
    for (const CLI::Option* option : NamedOptions(*verb)) DescribeOption(out, *option);
    DescribeFooter(out, verb->get_footer());
  }
  return out.str();
}

std::string TablesForBash(const CLI::App& app) {
  std::ostringstream out;
  std::string verbs;
  for (const CLI::App* verb : app.get_subcommands({})) {
    verbs += " " + verb->get_name();
    TablesOfVerb(out, *verb);
  }
  std::string options;
  for (const CLI::Option* option : NamedOptions(app)) {
    for (const std::string& name : Names(*option)) options += " " + name;
  }
  Assign(out, "options", "-", options);
  return "_stagemarks_verbs='" + verbs + "'\n" + out.str();
}

}  // namespace commandline
