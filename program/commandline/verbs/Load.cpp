#include <CLI/CLI.hpp>

#include "engine/scene/SceneDump.h"
#include "program/commandline/Session.h"

namespace commandline {

namespace {

int RunLoad(Program& program, const std::string& name) {
  Session session(program);
  if (const int status = session.StartWithScene(); status != kDone) return status;
  if (const int status = session.RequireMarks({name}); status != kDone) return status;
  const std::string before = engine::DumpState(session.Document());
  if (!session.Dialog().Select(name) || !session.Dialog().Press("Load")) {
    program.terminal.Error("\"" + name + "\" was not loaded.");
    return kFailed;
  }
  session.App().DeliverEvents();
  const auto changes = engine::DumpDifference(before, engine::DumpState(session.Document()), 12);
  Report report;
  report.Json() = {{"loaded", ValidUtf8(name)}, {"changed", !changes.empty()}};
  report.Line("Loaded " + Listed({name}) + "." + (changes.empty() ? " The scene was in that state already." : ""));
  if (program.verbose) {
    for (const std::string& change : changes) report.Line("  " + change);
  }
  return session.Keep(report);
}

}  // namespace

void AddLoad(CLI::App& app, Program& program) {
  CLI::App* verb = app.add_subcommand("load", "Bring the scene back into a recorded state");
  AddScene(*verb, program);
  auto name = std::make_shared<std::string>();
  verb->add_option("STAGEMARK", *name, "Its name")->required();
  AddKeeping(*verb, program);
  verb->footer(
      "Examples:\n"
      "  stagemarks load room.c4d Day --write\n"
      "  stagemarks load room.c4d Day -o day.c4d");
  verb->callback([&program, name] { program.verb = [&program, name] { return RunLoad(program, *name); }; });
}

}  // namespace commandline
