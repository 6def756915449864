
#include "program/commandline/Arguments.h"
#include "program/commandline/Exporting.h"
#include "program/pictures/PictureSize.h"

namespace commandline {

namespace {

struct ExportChoices {
  ExportOrder order;
  std::string frames;
};

int ReadFrames(Program& program, ExportChoices& choices) {
  if (choices.frames.empty()) return kDone;
  const auto range = pictures::ReadFrameRange(choices.frames);
  if (range) choices.order.frames = range.Value();
  if (!range) program.terminal.Error(range.Message());
  return range ? kDone : kUsage;
}

// "free" is null where the disk does not tell.
JsonMembers ReckonedIn(const exporting::ExportPlan& plan) {
  return {{"scenes", plan.scenes},
          {"textures", plan.textures},
          {"caches", plan.caches},
          {"bytes", plan.bytes},
          {"free", plan.free ? JsonValue(*plan.free) : JsonValue()}};
}

// Also after a failure: the files that were written are told.
void AddResult(const ExportOrder& order, const ExportResult& result, bool all, Report& report) {
  const std::string done = Counted(result.scenes.size(), "scene file") + " in " + order.folder;
  report.Line(!result.begun            ? "Nothing was exported."
              : result.status == kDone ? "Exported " + done
                                       : "Not everything was exported: " + done);
  for (const std::string& line : FileTreeLines(order.folder, result.written, all))
    report.Line("  " + line);
  report.Put("exported", result.scenes);
  report.Put("written", result.written);
  report.Put("missingTextures", result.missing);
  report.Put("failures", result.failures);
  report.PutObject("reckoned", ReckonedIn(result.plan));
}

// The scene files of the checked Stagemarks, as the plug-in names them.
std::vector<std::string> PlannedScenes(Session& session, const ExportOrder& order) {
  const bool sideBySide = order.layout == "file" || order.layout == "one-tex";
  std::vector<std::string> paths;
  for (const std::string& name : session.Dialog().CheckedNames()) {
    const std::string base = pictures::SceneName(session.Document()) + " " + name;
    paths.push_back(order.folder + "/" + (sideBySide ? "" : base + "/") + base + ".c4d");
  }
  return paths;
}

// Scenes that stand there are refused before anything is loaded.
int RunExport(Program& program, ExportChoices choices) {
  if (const int status = ReadFrames(program, choices); status != kDone) return status;
  choices.order.folder = AbsolutePath(choices.order.folder);
  Session session(program);
  session.Files().Follow(choices.order.folder);
  if (const int status = session.StartWithScene(); status != kDone) return status;
  if (const int status = session.Check(choices.order.only); status != kDone) return status;
  const auto scenes = PlannedScenes(session, choices.order);
  if (const int status = session.CheckReplacing(scenes, program.verbName); status != kDone)
    return status;
  const ExportResult result = Export(session, choices.order);
  for (const std::string& failure : result.failures) program.terminal.Error(failure);
  Report report;
  AddResult(choices.order, result, program.verbose, report);
  report.Print(program);
  return result.status != kDone && Terminal::Interrupted() ? kInterrupted : result.status;
}

constexpr const char* kExportFooter =
    "Scene files of the same names are replaced with --force only, their textures always. The "
    "scene itself is left alone.\n"
    "Before anything is written, the files are reckoned up: names that cannot be those of files "
    "are refused, and where the disk has too little room you are asked.\n"
    "A texture that was not found and a file that could not be written are named and make the "
    "exit status 1.\n\n"
    "Examples:\n"
    "  stagemarks export room.c4d --layout project --to out\n"
    "  stagemarks export room.c4d --layout file --to out --only \"shot_0*\" --frames 0:90";

}  // namespace

void AddExport(Arguments& arguments, Program& program) {
  Verb verb = arguments.AddVerb("export", "Write one standalone scene file per Stagemark");
  AddScene(verb, program);
  auto choices = std::make_shared<ExportChoices>();
  verb.Add("--to", choices->order.folder, "Folder for the files; made when it is missing")
      .Required()
      .Word("DIR");
  verb.Add("--layout", choices->order.layout,
           "file: scene files side by side; folders: each in a folder of its own; project: "
           "the same with the textures beside "
           "it; one-tex: side by side with one folder of textures")
      .OneOf(exporting::LayoutWords())
      .Default("folders")
      .Word("LAYOUT");
  AddOnly(verb, choices->order.only);
  AddStrict(verb, program);
  AddForce(verb, program);
  verb.Add("--frames", choices->frames, "Give every file this frame range, as 0:90")
      .Word("FROM:TO");
  verb.AddFlag(
      "--isolated", choices->order.isolated,
      "Load each Stagemark onto the scene as it is, not onto the one before it, so that no "
      "file depends on which others are exported");
  verb.AddFlag("-y,--yes", program.yes, "Answer every question with yes");
  verb.Footer(kExportFooter);
  verb.Does([&program, choices] { return RunExport(program, *choices); });
}

}  // namespace commandline
