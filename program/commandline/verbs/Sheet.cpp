#include <filesystem>

#include "program/commandline/Arguments.h"
#include "program/commandline/SheetMaking.h"

namespace commandline {

namespace {

struct SheetOptions {
  std::vector<std::string> states;
  bool html = false;
  std::string folder;
  unsigned jobs = 0;
};

// A sheet unless only a page is asked for; the page's folder has the name of the sheet where none
// is given.
SheetOrder OrderOf(const Program& program, const SheetOptions& options, const std::string& scene) {
  SheetOrder order{options.states, "", "", options.jobs};
  const std::string sheet =
      AbsolutePath(program.output.empty() ? SafeFileName(scene + " sheet") + ".png"
                                          : FillPattern(program.output, {scene, "", "", 0}));
  const bool onlyPage = options.html && program.output.empty() && !options.folder.empty();
  if (!onlyPage) order.sheet = sheet;
  if (!options.html) return order;
  order.folder = options.folder.empty() ? std::filesystem::path(sheet).replace_extension().string()
                                        : AbsolutePath(options.folder);
  return order;
}

int RunSheet(Program& program, const SheetOptions& options) {
  const auto name = program.output.empty() ? engine::Status() : CheckPattern(program.output);
  if (!name) {
    program.terminal.Error(name.Message());
    return kUsage;
  }
  Session session(program);
  if (const int status = session.StartWithScene(); status != kDone) return status;
  const SheetOrder order = OrderOf(program, options, SceneName(session.Document()));
  Report report;
  if (const int status = session.CheckTextures(report); status != kDone) return status;
  const int status = SheetMaking(session, order).Run(report);
  if (status != kDone) return status;
  report.Print(program.json);
  return session.CheckLedger();
}

}  // namespace

void AddSheet(Arguments& arguments, Program& program) {
  Verb verb =
      arguments.AddVerb("sheet", "Make a contact sheet of all states, or a page for a browser");
  AddScene(verb, program);
  auto options = std::make_shared<SheetOptions>();
  verb.Add("-o,--output", program.output, "The sheet, ending in .png or .tif")
      .Word("FILE")
      .Default("{scene} sheet.png");
  AddOnly(verb, options->states, "--state");
  const Option html =
      verb.Add("--html", options->folder,
               "Write a page with search into this folder, the sheet's name by default")
          .Word("DIR")
          .Count(0, 1);
  AddStrict(verb, program);
  verb.Add("--jobs", options->jobs, "Number of threads; 0: one for each core")
      .Word("N")
      .Between(0, 1024);
  AddForce(verb, program);
  verb.Footer(
      "Sheets and pages of an earlier `sheet` are replaced, other files are not.\n\n"
      "Examples:\n"
      "  stagemarks sheet room.c4d -o sheet.png\n"
      "  stagemarks sheet room.c4d --only \"shot_0*\" --html pictures");
  verb.Does([&program, options, html] {
    options->html = html.IsGiven();
    return RunSheet(program, *options);
  });
}

}  // namespace commandline
