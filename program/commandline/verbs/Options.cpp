#include <CLI/CLI.hpp>
#include <algorithm>

#include "program/commandline/Session.h"

namespace commandline {

namespace {

struct OptionChoices {
  std::vector<std::string> toggles;
  bool save = false;
};

int ToggleAll(Session& session, const std::vector<std::string>& names) {
  for (const std::string& name : names) {
    const auto options = session.Dialog().Options();
    const bool known = std::any_of(options.begin(), options.end(), [&](const auto& option) { return option.first == name; });
    if (!known) {
      std::string text = "There is no option \"" + name + "\". There are:";
      for (const auto& option : options) text += "\n  " + option.first;
      session.GetProgram().terminal.Error(text);
      return kUsage;
    }
    session.Dialog().Choose(name);
  }
  return kDone;
}

int RunOptions(Program& program, const OptionChoices& choices) {
  Session session(program);
  if (const int status = session.StartWithScene(); status != kDone) return status;
  if (const int status = ToggleAll(session, choices.toggles); status != kDone) return status;
  Report report;
  for (const auto& [name, on] : session.Dialog().Options()) {
    report.Json()["options"][name] = on;
    report.Line(std::string(on ? "[x] " : "[ ] ") + name);
  }
  if (choices.save) {
    session.Dialog().Choose("Save As Default Preferences");
    report.Line("Saved as the defaults for scenes without a choice of their own.");
  }
  if (!choices.toggles.empty()) return session.Keep(report);
  report.Print(program.json);
  return session.CheckLedger();
}

}  // namespace

void AddOptions(CLI::App& app, Program& program) {
  CLI::App* verb = app.add_subcommand("options", "Show or change what a recording takes in and a recall applies");
  AddScene(*verb, program);
  auto choices = std::make_shared<OptionChoices>();
  verb->add_option("--toggle", choices->toggles, "Turn an option on or off, by the name in the list; may be given several times")
      ->type_name("OPTION");
  verb->add_flag("--save-default", choices->save, "Make these the defaults for scenes without a choice of their own");
  AddKeeping(*verb, program);
  verb->footer(
      "Examples:\n"
      "  stagemarks options room.c4d\n"
      "  stagemarks options room.c4d --toggle Layers --toggle Materials --write");
  verb->callback([&program, choices] { program.verb = [&program, choices] { return RunOptions(program, *choices); }; });
}

}  // namespace commandline
