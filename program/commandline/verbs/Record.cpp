#include <CLI/CLI.hpp>

#include "program/commandline/Session.h"
#include "program/export/ExportPlan.h"

namespace commandline {

namespace {

struct RecordOptions {
  std::string name;
  bool preview = false;
};

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
  dialog.Tick("Generate Preview Image", options.preview && obstacle.empty());
  const bool recorded = dialog.Press("Record Element");
  session.App().DeliverEvents();
  // The dialog answers an empty name with a message only, and a refused overwriting with nothing at
  // all.
  if (options.name.empty()) return kUsage;
  if (!recorded || dialog.Current() != options.name) {
    program.terminal.Error("\"" + options.name + "\" was not recorded.");
    return kFailed;
  }
  report.Json().update({{"recorded", ValidUtf8(options.name)}, {"overwritten", existed}});
  report.Line(existed ? "Recorded " + Listed({options.name}) + " anew."
                      : "Recorded " + Listed({options.name}) + ".");
  const int status = session.Keep(report);
  if (obstacle.empty() || status != kDone) return status;
  program.terminal.Error("There is no preview: the name " + Listed({options.name}) +
                         " cannot be that of a file, " + obstacle + ".");
  return kFailed;
}

}  // namespace

void AddRecord(CLI::App& app, Program& program) {
  CLI::App* verb = app.add_subcommand("record", "Record the scene's state as a Stagemark");
  AddScene(*verb, program);
  auto options = std::make_shared<RecordOptions>();
  verb->add_option("NAME", options->name,
                   "Name of the Stagemark; one that exists is overwritten after a question")
      ->required();
  verb->add_flag("--preview", options->preview, "Generate a preview image into the side folder");
  AddStrict(*verb, program);
  AddKeeping(*verb, program);
  verb->footer(
      "Examples:\n"
      "  stagemarks record room.c4d Day --write\n"
      "  stagemarks record room.c4d Day --preview --yes --write");
  verb->callback([&program, options] {
    program.verb = [&program, options] { return RunRecord(program, *options); };
  });
}

}  // namespace commandline
