#include <algorithm>
#include <optional>
#include <unordered_map>
#include <unordered_set>

#include "engine/import/Import.h"
#include "engine/scenefile/NamesInFile.h"
#include "program/commandline/Arguments.h"
#include "program/commandline/Session.h"
#include "program/lookup/SceneLookup.h"

namespace commandline {

namespace {

struct ListOptions {
  std::vector<std::string> only;
  bool namesOnly = false;
  std::string begin;
};

// The names in the dialog's order, read without opening the scene. Nothing where it has to be
// opened for that: a scene of another format, or one from before there was a list in scenes.
engine::Result<std::optional<std::vector<std::string>>> NamesFromFile(const std::string& path) {
  using Names = std::optional<std::vector<std::string>>;
  if (engine::IsImportable(path)) return Names();
  auto names = engine::NamesInStore(path, engine::kListOfStates);
  if (names && names.Value()) {
    Names sorted = names.Take();
    std::ranges::stable_sort(*sorted);
    return sorted;
  }
  return names;
}

// Opens nothing but what the names stand in; kDone when they are printed.
std::optional<int> ListNamesOfFile(Program& program, const ListOptions& options) {
  if (program.open) return std::nullopt;
  auto names = NamesFromFile(AbsolutePath(program.scene));
  if (!names) {
    program.terminal.Error(names.Message());
    return kFailed;
  }
  if (!names.Value()) return std::nullopt;
  if (options.only.empty()) {
    PrintNames(*names.Value(), options.begin);
    return kDone;
  }
  const auto meant = FindMarks(options.only, *names.Value());
  if (!meant) {
    program.terminal.Error(meant.Message());
    return kUsage;
  }
  PrintNames(meant.Value(), options.begin);
  return kDone;
}

// The rows that are meant are checked, all others are not, as every verb with --only has it.
void AddMarks(Session& session, const std::vector<std::string>& names, bool all, Report& report) {
  const std::unordered_set<std::string> meant(names.begin(), names.end());
  if (!all) session.Dialog().CheckOnly(names);
  std::unordered_map<std::string, std::string> times;
  for (const engine::StoredState& state : engine::ReadStates(session.Document()))
    times.emplace(state.name, state.date.WithZone());
  report.PutList("stagemarks");
  for (const Mark& mark : session.Dialog().Marks()) {
    if (meant.count(mark.name) == 0) continue;
    report.Append("stagemarks", {{"name", mark.name},
                                 {"date", mark.date},
                                 {"recordedAt", JsonValue::OrNothing(times[mark.name])},
                                 {"current", mark.current}});
  }
  if (names.empty()) {
    report.Line("No Stagemarks yet. `stagemarks record SCENE NAME --write` records the first one.");
    return;
  }
  report.Line(session.Dialog().ListText());
  if (!all) report.Line(Counted(names.size(), "Stagemark") + " meant, marked with a cross.");
}

int RunList(Program& program, const ListOptions& options) {
  if (options.namesOnly) {
    if (const auto status = ListNamesOfFile(program, options)) return *status;
  }
  Session session(program);
  std::vector<std::string> names;
  if (const int status = session.StartWithScene(); status != kDone) return status;
  if (const int status = session.ChooseMarks(options.only, names); status != kDone) return status;
  if (options.namesOnly) {
    PrintNames(names, options.begin);
    return kDone;
  }
  Report report;
  AddMarks(session, names, options.only.empty(), report);
  report.Print(program);
  return kDone;
}

}  // namespace

void AddList(Arguments& arguments, Program& program) {
  Verb verb = arguments.AddVerb("list", "List the Stagemarks of a scene, as the dialog shows them");
  AddScene(verb, program);
  auto options = std::make_shared<ListOptions>();
  AddOnly(verb, options->only);
  verb.AddFlag("--names", options->namesOnly, "Print the names only, one a line")
      .Excludes("--json");
  verb.Add("--begin", options->begin, "").Word("TEXT").Hidden().Needs("--names");
  verb.Footer(
      "The star marks the Stagemark recorded or loaded last. Every verb that works on several "
      "Stagemarks takes --only; here it shows beforehand what a list of names and patterns "
      "means.\n\n"
      "Examples:\n"
      "  stagemarks list room.c4d\n"
      "  stagemarks list room.c4d --only \"shot_0*\" Night\n"
      "  stagemarks list room.c4d --json");
  verb.Does([&program, options] { return RunList(program, *options); });
}

}  // namespace commandline
