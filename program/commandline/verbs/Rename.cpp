
#include "program/commandline/Arguments.h"
#include "program/commandline/Session.h"
#include "program/pictures/DialogLabels.h"

namespace commandline {

namespace {

// The plug-in takes a name twice; here it is refused, since everything is found by name.
int RunRename(Program& program, const std::string& typed, const std::string& to) {
  Session session(program);
  std::string from;
  if (const int status = session.StartWithScene(); status != kDone) return status;
  if (const int status = session.ChooseMark(typed, from); status != kDone) return status;
  StagemarksDialog& dialog = session.Dialog();
  if (from != to && dialog.Has(to)) {
    program.terminal.Error("There is a Stagemark \"" + to +
                           "\" already. Delete or rename that one first.");
    return kUsage;
  }
  session.HoldSideFiles();
  dialog.Select(from);
  dialog.TypeName(to);
  dialog.Press(pictures::kRename);
  session.App().DeliverEvents();
  if (to.empty()) return kUsage;  // the dialog has said so
  Report report;
  report.Put("renamed", from);
  report.Put("to", to);
  report.Line("Renamed " + Listed({from}) + " to " + Listed({to}) + ".");
  return session.Keep(report);
}

}  // namespace

void AddRename(Arguments& arguments, Program& program) {
  Verb verb =
      arguments.AddVerb("rename", "Give a Stagemark another name; its preview image goes along");
  AddScene(verb, program);
  struct Names {
    std::string from;
    std::string to;
  };
  auto names = std::make_shared<Names>();
  verb.Add("OLD", names->from, "Its name now, or a pattern that means it alone").Required();
  verb.Add("NEW", names->to, "Its new name").Required();
  AddKeeping(verb, program);
  verb.Footer(
      "Example:\n"
      "  stagemarks rename room.c4d Day \"Day, rainy\" --write");
  verb.Does([&program, names] { return RunRename(program, names->from, names->to); });
}

}  // namespace commandline
