#include <unistd.h>

#include <CLI/CLI.hpp>
#include <iostream>

#include "program/commandline/Session.h"

namespace commandline {

namespace {

// For the shell: nothing but names, of a scene without any nothing at all. A program gets them byte
// by byte, to give them back.
void PrintNames(Session& session) {
  const bool forPerson = isatty(STDOUT_FILENO) != 0;
  for (const Mark& mark : session.Dialog().Marks())
    std::cout << (forPerson ? Shown(mark.name) : mark.name) << '\n';
}

int RunList(Program& program, bool namesOnly) {
  Session session(program);
  if (const int status = session.StartWithScene(); status != kDone) return status;
  if (namesOnly) {
    PrintNames(session);
    return kDone;
  }
  Report report;
  auto& all = report.Json()["stagemarks"] = nlohmann::json::array();
  for (const Mark& mark : session.Dialog().Marks()) {
    all.push_back({{"name", ValidUtf8(mark.name)}, {"date", mark.date}, {"current", mark.current}});
  }
  if (all.empty()) {
    report.Line("No Stagemarks yet. `stagemarks record SCENE NAME --write` records the first one.");
  } else {
    report.Line(session.Dialog().ListText());
  }
  report.Print(program.json);
  return kDone;
}

}  // namespace

void AddList(CLI::App& app, Program& program) {
  CLI::App* verb =
      app.add_subcommand("list", "List the Stagemarks of a scene, as the dialog shows them");
  AddScene(*verb, program);
  auto namesOnly = std::make_shared<bool>(false);
  verb->add_flag("--names", *namesOnly, "Print the names only, one a line")->excludes("--json");
  verb->footer(
      "The star marks the Stagemark recorded or loaded last.\n\n"
      "Examples:\n"
      "  stagemarks list room.c4d\n"
      "  stagemarks list room.c4d --json");
  verb->callback([&program, namesOnly] {
    program.verb = [&program, namesOnly] { return RunList(program, *namesOnly); };
  });
}

}  // namespace commandline
