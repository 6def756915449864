#include "program/commandline/Arguments.h"
#include "program/commandline/LoadParts.h"
#include "program/commandline/MatrixFormats.h"
#include "program/commandline/Session.h"
#include "program/pictures/PictureSize.h"

namespace commandline {

namespace {

struct MatrixOptions {
  std::vector<std::string> only;
  PartChoice parts;
  bool all = false;
  bool csv = false;
  bool html = false;
};

// For a person, with the signs of the cells explained below the table. `whole`: names and values
// are not shortened.
void AddLines(const host::BaseDocument& doc, const engine::StateMatrix& matrix, bool all,
              bool whole, Report& report) {
  if (matrix.Rows().empty()) {
    report.Line(
        all ? "These Stagemarks hold nothing of that."
            : "Nothing differs: each of these Stagemarks says the same of everything. --all "
              "lists it.");
    return;
  }
  AddMatrixText(doc, matrix, whole, report);
  report.Line("");
  report.Line("* changes from the Stagemark before it   - is not held" +
              std::string(all ? "" : "   (--all: also what does not differ)"));
}

// The table is computed from the records; nothing is loaded. A spreadsheet and a page are printed
// as they are made, without a report.
int RunMatrix(Program& program, const MatrixOptions& options) {
  Session session(program);
  std::vector<engine::StoredState> states;
  if (const int status = session.StartWithScene(); status != kDone) return status;
  if (const int status = session.Check(options.only); status != kDone) return status;
  if (const int status = session.ReadMarks(options.only, states); status != kDone) return status;
  const host::BaseDocument& doc = session.Document();
  const engine::StateMatrix matrix(
      doc, states, options.all ? engine::MatrixRows::All : engine::MatrixRows::Differing,
      PartsToShow(options.parts));
  if (options.csv) {
    PrintMatrixCsv(doc, matrix);
  } else if (options.html) {
    PrintMatrixPage(doc, matrix, pictures::SceneName(doc));
  } else {
    Report report;
    PutMatrix(doc, matrix, report);
    if (!program.json) AddLines(doc, matrix, options.all, program.verbose, report);
    report.Print(program);
  }
  return Terminal::Interrupted() ? kInterrupted : kDone;
}

}  // namespace

void AddMatrix(Arguments& arguments, Program& program) {
  Verb verb = arguments.AddVerb("matrix", "Lay out what each Stagemark says of each element");
  AddScene(verb, program);
  auto options = std::make_shared<MatrixOptions>();
  AddOnly(verb, options->only);
  AddPartsToShow(verb, options->parts);
  verb.AddFlag("--all", options->all, "Rows that do not differ, too");
  verb.AddFlag("--csv", options->csv, "Print a table for a spreadsheet").Excludes("--json");
  verb.AddFlag("--html", options->html, "Print a page for a browser")
      .Excludes("--json")
      .Excludes("--csv");
  verb.Footer(
      "A column is a Stagemark, a row an object, a layer, a tag, the camera or the render "
      "settings. With -v nothing is shortened.\n\n"
      "Examples:\n"
      "  stagemarks matrix room.c4d\n"
      "  stagemarks matrix room.c4d --only \"shot_0*\" --parts objects,layers\n"
      "  stagemarks matrix room.c4d --all --html > room.html");
  verb.Does([&program, options] { return RunMatrix(program, *options); });
}

}  // namespace commandline
