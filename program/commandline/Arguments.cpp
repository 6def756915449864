#include "program/commandline/Arguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdlib>

#include "program/commandline/HelpText.h"
#include "program/lookup/SceneLookup.h"

namespace commandline {

namespace {

// The message for a parse error; an unknown verb is named before any other fault. Where a verb was
// found, the library's own message names the option. Words that begin with a hyphen are passed over
// to find the one that was meant as a verb.
std::string Complaint(const CLI::App& app, const CLI::ParseError& error,
                      const std::vector<std::string>& words) {
  const auto typed = std::find_if(words.begin(), words.end(),
                                  [](const std::string& word) { return word.rfind('-', 0) != 0; });
  if (!app.get_subcommands().empty()) return error.what();
  if (typed == words.end()) return "No verb was given.";
  std::vector<std::string> known;
  for (const CLI::App* verb : app.get_subcommands({})) known.push_back(verb->get_name());
  return "There is no verb \"" + *typed + "\"." + lookup::DidYouMean(*typed, known);
}

// `--help` and `--version` come this way, too: they end the reading, and are no fault.
int Refuse(const CLI::App& app, const CLI::ParseError& error, Program& program,
           const std::vector<std::string>& words) {
  if (error.get_exit_code() == 0) return app.exit(error);
  const auto verbs = app.get_subcommands();
  program.terminal.Error(Complaint(app, error, words) + "\n`stagemarks" +
                         (verbs.empty() ? "" : " " + verbs.front()->get_name()) +
                         " --help` explains it.");
  return kUsage;
}

}  // namespace

Option& Option::Word(const char* word) {
  option_->type_name(word);
  return *this;
}

Option& Option::Default(const char* text) {
  option_->default_str(text);
  return *this;
}

Option& Option::Required() {
  option_->required();
  return *this;
}

Option& Option::Count(int count) {
  option_->expected(count);
  return *this;
}

Option& Option::Count(int least, int most) {
  option_->expected(least, most);
  return *this;
}

Option& Option::Separated(char separator) {
  option_->delimiter(separator);
  return *this;
}

Option& Option::OneWord() {
  option_->allow_extra_args(false);
  return *this;
}

Option& Option::OneOf(const std::vector<std::string>& values) {
  option_->check(CLI::IsMember(values));
  return *this;
}

Option& Option::Between(unsigned least, unsigned most) {
  option_->check(CLI::Range(least, most));
  return *this;
}

// A check of our own, whose message says what a share is.
Option& Option::Shares() {
  option_->check([](const std::string& typed) {
    const double share = std::strtod(typed.c_str(), nullptr);
    return share >= 0 && share <= 1 ? std::string() : "Value " + typed + " is not from 0 to 1";
  });
  return *this;
}

// For completion only; other values are taken. The text has the form that HelpText.cpp reads.
Option& Option::Offers(const char* word, const std::vector<std::string>& values) {
  std::string type = std::string(word) + ":{";
  for (const std::string& value : values) type += (value == values.front() ? "" : ",") + value;
  option_->type_name(type + "}");
  return *this;
}

// Options without a description are left out of help, manual page and completion.
Option& Option::Hidden() {
  option_->description("");
  return *this;
}

Option& Option::Excludes(const char* other) {
  option_->excludes(other);
  return *this;
}

Option& Option::Needs(const char* other) {
  option_->needs(other);
  return *this;
}

bool Option::IsGiven() const { return option_->count() > 0; }

Option Verb::Add(const char* names, std::string& value, const char* help) const {
  return Option(*verb_->add_option(names, value, help));
}

Option Verb::Add(const char* names, unsigned& value, const char* help) const {
  return Option(*verb_->add_option(names, value, help));
}

Option Verb::Add(const char* names, std::vector<std::string>& values, const char* help) const {
  return Option(*verb_->add_option(names, values, help));
}

Option Verb::Add(const char* names, std::vector<double>& values, const char* help) const {
  return Option(*verb_->add_option(names, values, help));
}

Option Verb::AddFlag(const char* names, bool& isOn, const char* help) const {
  return Option(*verb_->add_flag(names, isOn, help));
}

void Verb::BeginSection(const char* title) const { verb_->option_defaults()->group(title); }

void Verb::Footer(const char* text) const { verb_->footer(text); }

// The verb runs after everything is read, when messages and the program's choices are set.
void Verb::Does(std::function<int()> work) const {
  Program& program = *program_;
  verb_->callback([&program, work = std::move(work)] { program.verb = work; });
}

// -q and -v may also stand behind the verb (fallthrough).
Arguments::Arguments(Program& program)
    : program_(program),
      app_(std::make_unique<CLI::App>("Records, recalls and exports the states of a 3D scene",
                                      "stagemarks")) {
  app_->formatter(MakeHelpFormat(Terminal::Columns()));
  app_->set_version_flag("--version", "stagemarks " STAGEMARKS_VERSION);
  app_->add_flag("-q,--quiet", program.quiet, "No messages but errors");
  app_->add_flag("-v,--verbose", program.verbose, "Say what is being done");
  app_->require_subcommand(1);
  app_->fallthrough();
  app_->footer(
      "Nothing is written to your scene unless you say -o OUT or --write.\n"
      "Exit status: 0 done, 1 it did not work, 2 wrong usage or an unknown name, 130 stopped by "
      "Ctrl-C.\n\n"
      "Examples:\n"
      "  stagemarks import room.gltf room.c4d\n"
      "  stagemarks set room.c4d --object \"Lamp*\" --render off --write\n"
      "  stagemarks record room.c4d \"Lights out\" --write\n"
      "  stagemarks list room.c4d");
}

Arguments::~Arguments() = default;

Verb Arguments::AddVerb(const char* name, const char* help) {
  return {*app_->add_subcommand(name, help)->group(group_), program_};
}

std::optional<int> Arguments::Read(int count, char** words) {
  try {
    app_->parse(count, words);
  } catch (const CLI::ParseError& error) {
    return Refuse(*app_, error, program_, std::vector<std::string>(words + 1, words + count));
  }
  program_.verbName = app_->get_subcommands().front()->get_name();
  return std::nullopt;
}

std::string Arguments::TextForManualPage() const { return commandline::TextForManualPage(*app_); }

std::string Arguments::TablesForBash() const { return commandline::TablesForBash(*app_); }

void AddScene(Verb verb, Program& program, const char* help) {
  verb.Add("SCENE", program.scene, help).Required();
  verb.AddFlag("--json", program.json, "Print the result as JSON");
}

void AddKeeping(Verb verb, Program& program) {
  verb.Add("-o,--output", program.output, "Write the changed scene to this .c4d file").Word("OUT");
  verb.AddFlag("--write", program.write, "Write the change into the scene file itself")
      .Excludes("--output");
  AddForce(verb, program);
  AddWait(verb, program);
  verb.AddFlag("-y,--yes", program.yes, "Answer every question with yes");
}

// A day at most.
void AddWait(Verb verb, Program& program) {
  verb.Add("--wait", program.longestWait,
           "Seconds to wait for another program that changes the scene")
      .Word("SECONDS")
      .Between(0, 86400)
      .Default("60");
}

void AddStrict(Verb verb, Program& program) {
  verb.AddFlag("--strict", program.strict,
               "Fail, before anything is written, when a texture of the scene is missing");
}

void AddForce(Verb verb, Program& program) {
  verb.AddFlag("--force", program.force,
               "Replace a file that this command did not write, or a scene with Stagemarks");
}

// `former`: a name that the option had before, kept for old scripts.
void AddOnly(Verb verb, std::vector<std::string>& only, const char* former) {
  verb.Add("--only", only,
           "The Stagemarks that are meant, by name or by a pattern with * and ?; all without it")
      .Word("STAGEMARK...");
  if (former) verb.Add(former, only, "").Word("STAGEMARK").Hidden().Excludes("--only");
}

}  // namespace commandline
