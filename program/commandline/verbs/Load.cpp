
#include "engine/undo/Undo.h"
#include "program/commandline/Arguments.h"
#include "program/commandline/LoadParts.h"
#include "program/pictures/DialogLabels.h"

namespace commandline {

namespace {

constexpr std::size_t kMostTold = 24;  // elements of which --verbose tells what changed

struct LoadOptions {
  std::string name;
  PartChoice parts;
};

// " (camera, layers only)" where a choice was made for this load.
std::string PartsText(const PartChoice& choice, const std::vector<std::string>& applied) {
  const bool only = !choice.parts.empty();
  std::string text;
  for (const std::string& part : only ? applied : choice.without)
    text += (text.empty() ? "" : ", ") + part;
  if (text.empty()) return "";
  return only ? " (" + text + " only)" : " (without " + text + ")";
}

// "19 objects, 2 tags and the scene camera".
std::string ChangesText(const engine::StepDifference& changes) {
  std::vector<std::string> parts;
  const auto add = [&](std::size_t count, const char* noun) {
    if (count > 0) parts.push_back(Counted(count, noun));
  };
  add(changes.objects, "object");
  add(changes.tags, "tag");
  add(changes.layers, "layer");
  add(changes.others, "other element");
  if (changes.renderSettings > 0 || changes.activeSettings)
    parts.emplace_back("the render settings");
  if (changes.sceneCamera) parts.emplace_back("the scene camera");
  std::string text;
  for (std::size_t i = 0; i < parts.size(); ++i)
    text += (i == 0 ? "" : i + 1 == parts.size() ? " and " : ", ") + parts[i];
  return text;
}

void Describe(const engine::StepDifference& changes, bool verbose, Report& report) {
  report.Put("changed", !changes.IsEmpty());
  report.PutObject("changes",
                   {{"objects", changes.objects},
                    {"tags", changes.tags},
                    {"layers", changes.layers},
                    {"renderSettings", changes.renderSettings > 0 || changes.activeSettings},
                    {"sceneCamera", changes.sceneCamera}});
  if (!verbose) return;
  for (const std::string& line : changes.lines) report.Line("  " + Readable(line));
  const std::size_t elements =
      changes.objects + changes.tags + changes.layers + changes.renderSettings + changes.others;
  if (elements > kMostTold)
    report.Line("  and " + std::to_string(elements - kMostTold) + " more elements");
}

// kDone, with what it changed; it says why not.
int LoadMark(Session& session, const LoadOptions& options, engine::StepDifference& changes,
             std::vector<std::string>& applied) {
  Terminal& terminal = session.GetProgram().terminal;
  const std::string& name = options.name;
  const engine::UndoScope step(session.Document(), "Load " + name);
  {
    const PartsInUse parts(session, options.parts);
    applied = parts.Applied();
    if (!session.Dialog().Select(name) || !session.Dialog().Press(pictures::kLoad)) {
      terminal.Error("\"" + name + "\" was not loaded.");
      return kFailed;
    }
  }
  session.App().DeliverEvents();
  auto found = step.Difference(kMostTold, [](double) { return !Terminal::Interrupted(); });
  if (!found || Terminal::Interrupted()) {
    terminal.Error("Interrupted; nothing was written.");
    return kInterrupted;
  }
  changes = std::move(*found);
  return kDone;
}

int RunLoad(Program& program, const LoadOptions& options) {
  Session session(program);
  if (const int status = session.StartWithScene(); status != kDone) return status;
  if (const int status = session.RequireMarks({options.name}); status != kDone) return status;
  Report report;
  if (const int status = session.CheckTextures(report); status != kDone) return status;
  engine::StepDifference changes;
  std::vector<std::string> applied;
  if (const int status = LoadMark(session, options, changes, applied); status != kDone)
    return status;
  report.Put("loaded", options.name);
  report.Put("parts", applied);
  report.Line("Loaded " + Listed({options.name}) + PartsText(options.parts, applied) + ". " +
              (changes.IsEmpty() ? "The scene was in that state already."
                                 : "It changed " + ChangesText(changes) + "."));
  Describe(changes, program.verbose, report);
  return session.Keep(report);
}

}  // namespace

void AddLoad(Arguments& arguments, Program& program) {
  Verb verb = arguments.AddVerb("load", "Bring the scene back into a recorded state");
  AddScene(verb, program);
  auto options = std::make_shared<LoadOptions>();
  verb.Add("STAGEMARK", options->name, "Its name").Required();
  AddParts(verb, options->parts);
  AddStrict(verb, program);
  AddKeeping(verb, program);
  verb.Footer(
      "--parts and --without are for this load only: neither the scene nor your preferences keep "
      "them.\n\n"
      "Examples:\n"
      "  stagemarks load room.c4d Day --write\n"
      "  stagemarks load room.c4d Day --parts camera,layers --write\n"
      "  stagemarks load room.c4d Day -o day.c4d");
  verb.Does([&program, options] { return RunLoad(program, *options); });
}

}  // namespace commandline
