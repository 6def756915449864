// The verbs delete and delete-all.
#include "program/commandline/Arguments.h"
#include "program/commandline/Session.h"
#include "program/pictures/DialogLabels.h"

namespace commandline {

namespace {

using Names = std::vector<std::string>;

// Several are asked about once and deleted at once, where the dialog itself asks nothing.
bool PressDelete(Session& session, const Names& names) {
  StagemarksDialog& dialog = session.Dialog();
  if (names.size() == 1) return dialog.Select(names.front()) && dialog.Press(pictures::kDelete);
  if (!session.GetProgram().terminal.Ask("Are you sure you want to delete " + Listed(names) +
                                         "?  This cannot be undone."))
    return false;
  return dialog.CheckOnly(names) && dialog.Choose(pictures::kDeleteChecked);
}

// A no to the question shows in the rows that are left. Previews go only when the scene is written.
int RunDelete(Program& program, const Names& typed) {
  Session session(program);
  Names names;
  if (const int status = session.StartWithScene(); status != kDone) return status;
  if (const int status = session.ChooseMarks(typed, names); status != kDone) return status;
  session.HoldSideFiles();
  const std::size_t before = session.Dialog().Marks().size();
  PressDelete(session, names);
  session.App().DeliverEvents();
  if (session.Dialog().Marks().size() == before) {
    program.terminal.Error("Nothing was deleted.");
    return kFailed;
  }
  Report report;
  report.Put("deleted", names);
  report.Line("Deleted " + Listed(names) + ".");
  return session.Keep(report);
}

// The dialog asks about the folder with the preview images only; with a no the folder stays and all
// else goes.
int RunDeleteAll(Program& program) {
  Session session(program);
  if (const int status = session.StartWithScene(); status != kDone) return status;
  Names names;
  for (const Mark& mark : session.Dialog().Marks()) names.push_back(mark.name);
  session.HoldSideFiles();
  const std::size_t refused = program.terminal.Refused();
  session.Dialog().Choose(pictures::kDeleteAll);
  session.App().DeliverEvents();
  Report report;
  report.Put("deleted", names);
  report.Line("Deleted " +
              (names.empty() ? std::string("no Stagemarks: there are none") : Listed(names)) + ".");
  if (program.terminal.Refused() > refused)
    report.Line("The folder with the preview images stays.");
  return session.Keep(report);
}

}  // namespace

void AddDelete(Arguments& arguments, Program& program) {
  Verb verb = arguments.AddVerb("delete", "Delete Stagemarks, with their preview images");
  AddScene(verb, program);
  auto names = std::make_shared<Names>();
  verb.Add("STAGEMARKS", *names, "Those to delete, by name or by a pattern with * and ?")
      .Required();
  AddKeeping(verb, program);
  verb.Footer(
      "It asks before it deletes; where nobody can be asked nothing is deleted unless --yes is "
      "given.\n\n"
      "Examples:\n"
      "  stagemarks delete room.c4d Day \"Night, rainy\" --yes --write\n"
      "  stagemarks delete room.c4d \"shot_0*\" --write");
  verb.Does([&program, names] { return RunDelete(program, *names); });
}

void AddDeleteAll(Arguments& arguments, Program& program) {
  Verb verb = arguments.AddVerb("delete-all", "Delete every Stagemark of a scene");
  AddScene(verb, program);
  AddKeeping(verb, program);
  verb.Footer(
      "It asks whether the folder with the preview images goes, too; where nobody can be asked it "
      "stays unless --yes is "
      "given.\n\n"
      "Example:\n"
      "  stagemarks delete-all room.c4d -o clean.c4d");
  verb.Does([&program] { return RunDeleteAll(program); });
}

}  // namespace commandline
