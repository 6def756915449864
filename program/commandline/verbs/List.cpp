#include <unistd.h>

#include <iostream>

#include "program/commandline/Arguments.h"
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
  report.PutList("stagemarks");
  const std::vector<Mark> marks = session.Dialog().Marks();
  for (const Mark& mark : marks) {
    report.Append("stagemarks",
                  {{"name", mark.name}, {"date", mark.date}, {"current", mark.current}});
  }
  if (marks.empty()) {
    report.Line("No Stagemarks yet. `stagemarks record SCENE NAME --write` records the first one.");
  } else {
    report.Line(session.Dialog().ListText());
  }
  report.Print(program.json);
  return kDone;
}

}  // namespace

void AddList(Arguments& arguments, Program& program) {
  Verb verb = arguments.AddVerb("list", "List the Stagemarks of a scene, as the dialog shows them");
  AddScene(verb, program);
  auto namesOnly = std::make_shared<bool>(false);
  verb.AddFlag("--names", *namesOnly, "Print the names only, one a line").Excludes("--json");
  verb.Footer(
      "The star marks the Stagemark recorded or loaded last.\n\n"
      "Examples:\n"
      "  stagemarks list room.c4d\n"
      "  stagemarks list room.c4d --json");
  verb.Does([&program, namesOnly] { return RunList(program, *namesOnly); });
}

}  // namespace commandline
