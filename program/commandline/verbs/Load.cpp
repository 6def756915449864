#include <CLI/CLI.hpp>

#include "engine/undo/Undo.h"
#include "program/commandline/Session.h"

namespace commandline {

namespace {

constexpr std::size_t kMostTold = 24;  // elements of which --verbose tells what changed

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
  if (changes.renderSettings > 0 || changes.activeSettings) parts.emplace_back("the render settings");
  if (changes.sceneCamera) parts.emplace_back("the scene camera");
  std::string text;
  for (std::size_t i = 0; i < parts.size(); ++i) text += (i == 0 ? "" : i + 1 == parts.size() ? " and " : ", ") + parts[i];
  return text;
}

void Describe(const engine::StepDifference& changes, bool verbose, Report& report) {
  report.Json()["changed"] = !changes.IsEmpty();
  report.Json()["changes"] = {{"objects", changes.objects},
                              {"tags", changes.tags},
                              {"layers", changes.layers},
                              {"renderSettings", changes.renderSettings > 0 || changes.activeSettings},
                              {"sceneCamera", changes.sceneCamera}};
  if (!verbose) return;
  for (const std::string& line : changes.lines) report.Line("  " + Readable(line));
  const std::size_t elements = changes.objects + changes.tags + changes.layers + changes.renderSettings + changes.others;
  if (elements > kMostTold) report.Line("  and " + std::to_string(elements - kMostTold) + " more elements");
}

// kDone, with what it changed; it says why not.
int LoadMark(Session& session, const std::string& name, engine::StepDifference& changes) {
  Terminal& terminal = session.GetProgram().terminal;
  const engine::UndoScope step(session.Document(), "Load " + name);
  if (!session.Dialog().Select(name) || !session.Dialog().Press("Load")) {
    terminal.Error("\"" + name + "\" was not loaded.");
    return kFailed;
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

int RunLoad(Program& program, const std::string& name) {
  Session session(program);
  if (const int status = session.StartWithScene(); status != kDone) return status;
  if (const int status = session.RequireMarks({name}); status != kDone) return status;
  engine::StepDifference changes;
  if (const int status = LoadMark(session, name, changes); status != kDone) return status;
  Report report;
  report.Json()["loaded"] = ValidUtf8(name);
  report.Line("Loaded " + Listed({name}) + ". " +
              (changes.IsEmpty() ? "The scene was in that state already." : "It changed " + ChangesText(changes) + "."));
  Describe(changes, program.verbose, report);
  return session.Keep(report);
}

}  // namespace

void AddLoad(CLI::App& app, Program& program) {
  CLI::App* verb = app.add_subcommand("load", "Bring the scene back into a recorded state");
  AddScene(*verb, program);
  auto name = std::make_shared<std::string>();
  verb->add_option("STAGEMARK", *name, "Its name")->required();
  AddKeeping(*verb, program);
  verb->footer(
      "Examples:\n"
      "  stagemarks load room.c4d Day --write\n"
      "  stagemarks load room.c4d Day -o day.c4d");
  verb->callback([&program, name] { program.verb = [&program, name] { return RunLoad(program, *name); }; });
}

}  // namespace commandline
