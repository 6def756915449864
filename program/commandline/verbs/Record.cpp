#include <CLI/CLI.hpp>

#include "program/commandline/Session.h"

namespace commandline {

namespace {

struct RecordOptions {
  std::string name;
  bool preview = false;
};

int RunRecord(Program& program, const RecordOptions& options) {
  Session session(program);
  if (const int status = session.StartWithScene(); status != kDone) return status;
  StagemarksDialog& dialog = session.Dialog();
  session.HoldSideFiles();
  const bool existed = dialog.Has(options.name);
  dialog.TypeName(options.name);
  dialog.Tick("Generate Preview Image", options.preview);
  const bool recorded = dialog.Press("Record Element");
  session.App().DeliverEvents();
  // The dialog answers an empty name with a message only, and a refused overwriting with nothing at all.
  if (options.name.empty()) return kUsage;
  if (!recorded || dialog.Current() != options.name) {
    program.terminal.Error("\"" + options.name + "\" was not recorded.");
    return kFailed;
  }
  Report report;
  report.Json() = {{"recorded", ValidUtf8(options.name)}, {"overwritten", existed}};
  report.Line(existed ? "Recorded " + Listed({options.name}) + " anew." : "Recorded " + Listed({options.name}) + ".");
  return session.Keep(report);
}

}  // namespace

void AddRecord(CLI::App& app, Program& program) {
  CLI::App* verb = app.add_subcommand("record", "Record the scene's state as a Stagemark");
  AddScene(*verb, program);
  auto options = std::make_shared<RecordOptions>();
  verb->add_option("NAME", options->name, "Name of the Stagemark; one that exists is overwritten after a question")->required();
  verb->add_flag("--preview", options->preview, "Generate a preview image into the side folder");
  AddKeeping(*verb, program);
  verb->footer(
      "Examples:\n"
      "  stagemarks record room.c4d Day --write\n"
      "  stagemarks record room.c4d Day --preview --yes --write");
  verb->callback([&program, options] { program.verb = [&program, options] { return RunRecord(program, *options); }; });
}

}  // namespace commandline
