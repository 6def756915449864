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
  std::string size;
  std::vector<std::string> from;
  bool resume = false;
};

// A sheet unless only a page is asked for; the page's folder has the name of the sheet where none
// is given.
SheetOrder OrderOf(const Program& program, const SheetOptions& options, const std::string& scene) {
  SheetOrder order;
  order.states = options.states;
  order.threads = options.jobs;
  order.resume = options.resume;
  for (const std::string& folder : options.from) order.from.push_back(AbsolutePath(folder));
  if (!options.size.empty()) order.size = ParsePictureSize(options.size).Value();
  PictureFacts facts;
  facts.scene = scene;
  const std::string sheet =
      AbsolutePath(program.output.empty() ? SafeFileName(scene + " sheet") + ".png"
                                          : FillPattern(program.output, facts));
  const bool onlyPage = options.html && program.output.empty() && !options.folder.empty();
  if (!onlyPage) order.sheet = sheet;
  if (!options.html) return order;
  order.folder = options.folder.empty() ? std::filesystem::path(sheet).replace_extension().string()
                                        : AbsolutePath(options.folder);
  return order;
}

// A sheet is one file, of a kind that screens show.
engine::Status CheckSheet(const std::string& pattern, const std::string& size) {
  if (!size.empty()) {
    if (const auto parsed = ParsePictureSize(size); !parsed) return parsed.GetStatus();
  }
  if (pattern.empty()) return {};
  if (engine::Status checked = CheckPattern(pattern); !checked) return checked;
  for (const char* name : {"state", "camera", "size", "frame", "date", "index"}) {
    if (HasPlaceholder(pattern, name)) {
      return engine::Status::Failure(
          "A sheet shows many states: its name may have {scene}, and no {" + std::string(name) +
          "}.");
    }
  }
  if (KindOfName(pattern) != PictureKind::Exr) return {};
  return engine::Status::Failure("A sheet is a .png or a .tif; \"" + pattern + "\" is neither.");
}

int RunSheet(Program& program, const SheetOptions& options) {
  if (const auto checked = CheckSheet(program.output, options.size); !checked) {
    program.terminal.Error(checked.Message());
    return kUsage;
  }
  Session session(program);
  if (const int status = session.StartWithScene(); status != kDone) return status;
  const SheetOrder order = OrderOf(program, options, SceneName(session.Document()));
  Report report;
  if (const int status = session.CheckTextures(report); status != kDone) return status;
  const int status = SheetMaking(session, order).Run(report);
  if (status != kDone) return status;
  report.Print(program);
  return session.CheckLedger();
}

constexpr const char* kSheetFooter =
    "Sheets and pages of an earlier `sheet` are replaced, other files are not. A page has its "
    "pictures in a folder of their own, `pictures`.\n\n"
    "Examples:\n"
    "  stagemarks sheet room.c4d -o sheet.png\n"
    "  stagemarks sheet room.c4d -o sheet.png --from pictures --size 480x270\n"
    "  stagemarks sheet room.c4d --only \"shot_0*\" --html pictures";

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
  verb.Add("--size", options->size,
           "What each picture fits into, as 480x270, instead of a size "
           "that suits their number")
      .Word("WIDTHxHEIGHT");
  verb.Add("--from", options->from,
           "Folders with pictures that `render` made; those made from the same are used instead of "
           "rendering again. The folder of the sheet is looked in always")
      .Word("DIR...");
  verb.AddFlag("--resume", options->resume,
               "Keep the sheet's own pictures in a folder beside it, and use those that are there "
               "and were made from the same");
  AddStrict(verb, program);
  verb.Add("--jobs", options->jobs, "Number of threads; 0: one for each core")
      .Word("N")
      .Between(0, 1024);
  AddForce(verb, program);
  verb.Footer(kSheetFooter);
  verb.Does([&program, options, html] {
    options->html = html.IsGiven();
    return RunSheet(program, *options);
  });
}

}  // namespace commandline
