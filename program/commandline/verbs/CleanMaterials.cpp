
#include "host/Host.h"
#include "program/commandline/Arguments.h"
#include "program/commandline/Session.h"
#include "program/outcome/CommandWatch.h"
#include "program/pictures/DialogLabels.h"

namespace commandline {

namespace {

std::vector<std::string> Materials(const host::BaseDocument& doc) {
  std::vector<std::string> names;
  for (host::BaseMaterial* at = doc.GetFirstMaterial(); at; at = at->GetNext())
    names.push_back(at->GetName().ToUtf8());
  return names;
}

// The names before and after tell which ones went: the plug-in says nothing.
int RunCleanMaterials(Program& program) {
  Session session(program);
  if (const int status = session.StartWithScene(); status != kDone) return status;
  if (session.Dialog().Marks().empty()) {
    program.terminal.Error(outcome::kNoMarksForMaterials);
    return kFailed;
  }
  const auto before = Materials(session.Document());
  session.Dialog().Choose(pictures::kCleanMaterials);
  session.App().DeliverEvents();
  const auto after = Materials(session.Document());
  const auto gone = outcome::NamesGone(before, after);
  Report report;
  report.Put("deleted", gone);
  report.Put("kept", after);
  report.Line(outcome::CleanedSentence(gone));
  report.Line("Kept " + Counted(after.size(), "material") +
              (after.empty() ? "." : ": " + Listed(after) + "."));
  return session.Keep(report);
}

}  // namespace

void AddCleanMaterials(Arguments& arguments, Program& program) {
  Verb verb = arguments.AddVerb("clean-materials", "Delete the materials that no Stagemark uses");
  AddScene(verb, program);
  AddKeeping(verb, program);
  verb.Footer(
      "Only what a Stagemark has recorded counts: a material that the scene itself uses goes, too, "
      "when no Stagemark recorded "
      "it.\n\n"
      "Example:\n"
      "  stagemarks clean-materials room.c4d -o small.c4d");
  verb.Does([&program] { return RunCleanMaterials(program); });
}

}  // namespace commandline
