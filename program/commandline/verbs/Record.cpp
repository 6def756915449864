
#include "program/commandline/Arguments.h"
#include "program/commandline/Session.h"
#include "program/export/ExportPlan.h"
#include "program/pictures/DialogLabels.h"

namespace commandline {

namespace {

struct RecordOptions {
  std::string name;
  bool preview = false;
};

// A name that no file can have is recorded all the same, without its preview, which makes the verb
// fail at its end.
int RunRecord(Program& program, const RecordOptions& options) {
  Session session(program);
  if (const int status = session.StartWithScene(); status != kDone) return status;
  Report report;
  if (const int status = session.CheckTextures(report); status != kDone) return status;
  StagemarksDialog& dialog = session.Dialog();
  session.HoldSideFiles();
  const bool existed = dialog.Has(options.name);
  dialog.TypeName(options.name);
  const std::string obstacle =
      options.preview ? exporting::WhyNoFileName(options.name + ".tif") : "";
  dialog.Tick(pictures::kGeneratePreview, options.preview && obstacle.empty());
  const bool recorded = dialog.Press(pictures::kRecord);
  session.App().DeliverEvents();
  // The dialog answers an empty name with a message only, and a refused overwriting with nothing at
  // all.
  if (options.name.empty()) return kUsage;
  if (!recorded || dialog.Current() != options.name) {
    program.terminal.Error("\"" + options.name + "\" was not recorded.");
    return kFailed;
  }
  report.Put("recorded", options.name);
  report.Put("overwritten", existed);
  report.Line(existed ? "Recorded " + Listed({options.name}) + " anew."
                      : "Recorded " + Listed({options.name}) + ".");
  const int status = session.Keep(report);
  if (obstacle.empty() || status != kDone) return status;
  program.terminal.Error("There is no preview: the name " + Listed({options.name}) +
                         " cannot be that of a file, " + obstacle + ".");
  return kFailed;
}

}  // namespace

void AddRecord(Arguments& arguments, Program& program) {
  Verb verb = arguments.AddVerb("record", "Record the scene's state as a Stagemark");
  AddScene(verb, program);
  auto options = std::make_shared<RecordOptions>();
  verb.Add("NAME", options->name,
           "Name of the Stagemark; one that exists is overwritten after a question")
      .Required();
  verb.AddFlag("--preview", options->preview, "Generate a preview image into the side folder");
  AddStrict(verb, program);
  AddKeeping(verb, program);
  verb.Footer(
      "Examples:\n"
      "  stagemarks record room.c4d Day --write\n"
      "  stagemarks record room.c4d Day --preview --yes --write");
  verb.Does([&program, options] { return RunRecord(program, *options); });
}

}  // namespace commandline
