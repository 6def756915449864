#include "program/commandline/Description.h"

#include <algorithm>
#include <sstream>

#include "program/commandline/HelpFormat.h"

namespace commandline {

namespace {

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
  return verb.get_options([](const CLI::Option* option) { return !option->get_positional(); });
}

// "OUT", "NAMES..." where several are taken.
std::string Place(const CLI::Option& positional) {
  return positional.get_name() + (positional.get_expected_max() > 1 ? "..." : "");
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

// What a check allows, as "on off"; empty where it allows many.
std::string AllowedValues(const CLI::Option& option) {
  const std::string type = option.get_type_name();
  const std::size_t start = type.find(":{");
  if (start == std::string::npos) return "";
  std::string values = type.substr(start + 2, type.find('}', start) - start - 2);
  std::replace(values.begin(), values.end(), ',', ' ');
  return values;
}

void Assign(std::ostream& out, const std::string& table, const std::string& key,
            const std::string& value) {
  out << "_stagemarks_" << table << "['" << key << "']='" << value << "'\n";
}

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
  for (const CLI::Option* option : Positionals(verb)) places += " " + Place(*option);
  Assign(out, "options", verb.get_name(), all);
  Assign(out, "places", verb.get_name(), places);
}

}  // namespace

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
