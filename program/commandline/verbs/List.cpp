#include <unistd.h>

#include <iostream>
#include <unordered_set>

#include "program/commandline/Arguments.h"
#include "program/commandline/Session.h"

namespace commandline {

namespace {

// For the shell: nothing but names, of a scene without any nothing at all. A program gets them byte
// by byte, to give them back.
void PrintNames(const std::vector<std::string>& names) {
  const bool forPerson = isatty(STDOUT_FILENO) != 0;
  for (const std::string& name : names) std::cout << (forPerson ? Shown(name) : name) << '\n';
}

struct ListOptions {
  std::vector<std::string> only;
  bool namesOnly = false;
};

// The rows that are meant are checked, all others are not, as every verb with --only has it.
void AddMarks(Session& session, const std::vector<std::string>& names, bool all, Report& report) {
  const std::unordered_set<std::string> meant(names.begin(), names.end());
  if (!all) session.Dialog().CheckOnly(names);
  report.PutList("stagemarks");
  for (const Mark& mark : session.Dialog().Marks()) {
    if (meant.count(mark.name) == 0) continue;
    report.Append("stagemarks",
                  {{"name", mark.name}, {"date", mark.date}, {"current", mark.current}});
  }
  if (names.empty()) {
    report.Line("No Stagemarks yet. `stagemarks record SCENE NAME --write` records the first one.");
    return;
  }
  report.Line(session.Dialog().ListText());
  if (!all) report.Line(Counted(names.size(), "Stagemark") + " meant, marked with a cross.");
}

int RunList(Program& program, const ListOptions& options) {
  Session session(program);
  std::vector<std::string> names;
  if (const int status = session.StartWithScene(); status != kDone) return status;
  if (const int status = session.ChooseMarks(options.only, names); status != kDone) return status;
  if (options.namesOnly) {
    PrintNames(names);
    return kDone;
  }
  Report report;
  AddMarks(session, names, options.only.empty(), report);
  report.Print(program.json);
  return kDone;
}

}  // namespace

void AddList(Arguments& arguments, Program& program) {
  Verb verb = arguments.AddVerb("list", "List the Stagemarks of a scene, as the dialog shows them");
  AddScene(verb, program);
  auto options = std::make_shared<ListOptions>();
  AddOnly(verb, options->only);
  verb.AddFlag("--names", options->namesOnly, "Print the names only, one a line")
      .Excludes("--json");
  verb.Footer(
      "The star marks the Stagemark recorded or loaded last. Every verb that works on several "
      "Stagemarks takes --only; here it shows beforehand what a list of names and patterns "
      "means.\n\n"
      "Examples:\n"
      "  stagemarks list room.c4d\n"
      "  stagemarks list room.c4d --only \"shot_0*\" Night\n"
      "  stagemarks list room.c4d --json");
  verb.Does([&program, options] { return RunList(program, *options); });
}

}  // namespace commandline
