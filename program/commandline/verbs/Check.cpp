#include <CLI/CLI.hpp>

#include "program/commandline/Session.h"

namespace commandline {

namespace {

int RunCheck(Program& program, const std::vector<std::string>& only) {
  Session session(program);
  if (const int status = session.StartWithScene(); status != kDone) return status;
  if (const int status = session.Check(only); status != kDone) return status;
  Report report;
  report.Json()["checked"] = JsonOf(session.Dialog().CheckedNames());
  report.Line(session.Dialog().ListText());
  report.Line(Counted(session.Dialog().CheckedNames().size(), "Stagemark") + " checked.");
  report.Print(program.json);
  return kDone;
}

}  // namespace

void AddCheck(CLI::App& app, Program& program) {
  CLI::App* verb = app.add_subcommand("check", "Show which Stagemarks a list of names means");
  AddScene(*verb, program);
  auto only = std::make_shared<std::vector<std::string>>();
  AddOnly(*verb, *only);
  verb->footer(
      "Check marks live in the list only and are not kept in the scene: every verb that works on "
      "checked Stagemarks takes\n"
      "--only itself. This one shows beforehand what such a list selects, and refuses unknown "
      "names.\n\n"
      "Example:\n"
      "  stagemarks check room.c4d --only Day Night");
  verb->callback(
      [&program, only] { program.verb = [&program, only] { return RunCheck(program, *only); }; });
}

}  // namespace commandline
