
#include <algorithm>

#include "engine/states/FieldText.h"
#include "engine/undo/Undo.h"
#include "program/commandline/Arguments.h"
#include "program/commandline/ChangeLists.h"
#include "program/commandline/LoadParts.h"
#include "program/pictures/DialogLabels.h"

namespace commandline {

namespace {

constexpr std::size_t kMostTold = 24;  // elements of which --verbose tells what changed

struct LoadOptions {
  std::string name;
  bool dryRun = false;
  PartChoice parts;
};

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

void PutCounts(const engine::StepDifference& changes, Report& report) {
  report.Put("changed", !changes.IsEmpty());
  report.PutObject("changes",
                   {{"objects", changes.objects},
                    {"tags", changes.tags},
                    {"layers", changes.layers},
                    {"renderSettings", changes.renderSettings > 0 || changes.activeSettings},
                    {"sceneCamera", changes.sceneCamera}});
}

void Describe(const engine::StepDifference& changes, bool verbose, Report& report) {
  PutCounts(changes, report);
  if (!verbose) return;
  for (const std::string& line : changes.lines) report.Line("  " + Readable(line));
  const std::size_t elements =
      changes.objects + changes.tags + changes.layers + changes.renderSettings + changes.others;
  if (elements > kMostTold)
    report.Line("  and " + std::to_string(elements - kMostTold) + " more elements");
}

// kDone, with what it changed; it says why not. The difference is that of the open undo step, so it
// tells what was really written. The options are back before it is asked.
int LoadMark(Session& session, const LoadOptions& options, engine::StepDifference& changes) {
  Terminal& terminal = session.GetProgram().terminal;
  const std::string& name = options.name;
  const engine::UndoScope step(session.Document(), "Load " + name);
  {
    const PartsInUse parts(session.Dialog(), session.Document(), options.parts);
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

int LoadAndKeep(Session& session, const LoadOptions& options, Report& report) {
  const auto applied = WordsToLoad(session, options.parts);
  engine::StepDifference changes;
  if (const int status = LoadMark(session, options, changes); status != kDone) return status;
  report.Put("loaded", options.name);
  report.Put("parts", applied);
  report.Line("Loaded " + Listed({options.name}) + PartsText(options.parts, applied) + ". " +
              (changes.IsEmpty() ? "The scene was in that state already."
                                 : "It changed " + ChangesText(changes) + "."));
  Describe(changes, session.GetProgram().verbose, report);
  return session.Keep(report);
}

// The effects of a load, computed from the record: nothing is loaded.
class DryRun {
 public:
  // For a person fields are read of those elements only that are going to be listed, once it is
  // known which.
  DryRun(Session& session, const LoadOptions& options, const engine::StoredState& state)
      : session_(session),
        options_(options),
        doc_(session.Document()),
        sides_{doc_, doc_, "the scene", Listed({state.name}), session.GetProgram().verbose} {
    const Program& program = session.GetProgram();
    engine::CompareOptions compare;
    compare.parts = PartsToLoad(session, options.parts);
    leftAlone_ = LeftAloneText(session, options.parts, state.record);
    if (!program.verbose && !program.json) compare.mostFields = 1;
    found_ = engine::CompareWithScene(doc_, state.record, compare);
    const auto lost = engine::FindLost(doc_, engine::ReadStates(doc_), found_);
    if (compare.mostFields == 1) TellListed(doc_, state.record, compare, lost, found_);
    SetApart(lost);
  }

  void Describe(Report& report) {
    const auto applied = WordsToLoad(session_, options_.parts);
    const engine::StepDifference counts = Counts();
    report.Put("loaded", JsonValue());
    report.Put("wouldLoad", options_.name);
    report.Put("parts", applied);
    PutCounts(counts, report);
    PutChanges(sides_, changes_, report);
    report.PutStream("unknown", [this](const auto& append) {
      for (const engine::ElementChange& change : unknown_) append(MembersOf(sides_, change));
    });
    report.PutStream("lost", [this](const auto& append) {
      for (const engine::ElementChange& change : lost_.changes) append(MembersOf(sides_, change));
    });
    report.Line("Loading " + Listed({options_.name}) + PartsText(options_.parts, applied) + " " +
                (counts.IsEmpty() ? "would change nothing: the scene is in that state already."
                                  : "would change " + ChangesText(counts) + "."));
    AddLines(report);
  }

 private:
  // Changes from what the state knows nothing of, and once more those that are final.
  void SetApart(const std::vector<std::size_t>& lost) {
    for (const std::size_t at : lost) lost_.changes.push_back(found_.changes[at]);
    std::vector<engine::ElementChange> changed;
    for (engine::ElementChange& change : found_.changes) {
      const bool isKnown = change.kind == engine::ChangeKind::Changed;
      (isKnown ? changed : unknown_).push_back(std::move(change));
    }
    found_.changes = std::move(changed);
    for (engine::PartCount& count : found_.counts) count.onlyLeft = 0;
    changes_ = std::move(found_);
  }

  // Counted as a load counts, so that a dry run and the load say the same.
  engine::StepDifference Counts() const {
    engine::StepDifference counts;
    for (const engine::PartRow& row : engine::kPartRows) {
      const std::size_t count = changes_.Of(row.part).changed;
      if (row.tagType != 0) counts.tags += count;
      if (row.part == engine::Part::Objects) counts.objects = count;
      if (row.part == engine::Part::Layers) counts.layers = count;
      if (row.part == engine::Part::RenderSettings) counts.renderSettings = count;
      if (row.part == engine::Part::Camera) counts.sceneCamera = count > 0;
    }
    return counts;
  }

  // Lists the present values that no Stagemark has and that a load would lose; false when not all
  // are listed.
  bool AddLost(Report& report) const {
    if (lost_.changes.empty()) return true;
    std::vector<FactRow> rows;
    std::size_t listed = 0;
    for (const engine::ElementChange& change : lost_.changes) {
      if (!sides_.whole && (listed == kMostListed || change.fields.empty())) continue;
      ++listed;
      AppendValuesLeft(sides_, change, rows);
    }
    report.Line("");
    report.Line(
        Colored(Color::Yellow, "Will be lost") + ": " + Counted(lost_.changes.size(), "element") +
        (lost_.changes.size() == 1 ? " is" : " are") + " in no Stagemark as the scene has " +
        (lost_.changes.size() == 1 ? "it" : "them") + " now");
    AddRows(rows, sides_.whole, report);
    if (listed == lost_.changes.size()) return true;
    report.Line("  and " + std::to_string(lost_.changes.size() - listed) + " more");
    return false;
  }

  // Lists the elements that a load leaves alone, because the state does not have them; false when
  // not all are listed.
  bool AddUnknown(Report& report) const {
    if (unknown_.empty()) return true;
    const bool one = unknown_.size() == 1;
    const std::size_t listed =
        sides_.whole ? unknown_.size() : std::min(unknown_.size(), kMostListed);
    std::vector<FactRow> rows;
    for (std::size_t i = 0; i < listed; ++i) {
      rows.push_back(
          {PlaceOf(sides_, unknown_[i]), "", engine::ElementKind(doc_, unknown_[i].element)});
    }
    report.Line("");
    report.Line("Stays as it is: " + Counted(unknown_.size(), "element") + " of the scene " +
                (one ? "is" : "are") + " not in " + sides_.right);
    AddRows(rows, sides_.whole, report);
    if (listed < unknown_.size())
      report.Line("  and " + std::to_string(unknown_.size() - listed) + " more");
    return listed == unknown_.size();
  }

  void AddLines(Report& report) {
    bool isWhole = AddChanges(sides_, changes_, report);
    isWhole = AddLost(report) && isWhole;
    isWhole = AddUnknown(report) && isWhole;
    if (!leftAlone_.empty()) report.Line("");
    if (!leftAlone_.empty()) report.Line(leftAlone_);
    if (!isWhole) report.Line("\n-v lists everything.");
  }

  Session& session_;
  const LoadOptions& options_;
  const host::BaseDocument& doc_;
  Sides sides_;
  engine::Difference found_;
  engine::Difference changes_;
  engine::Difference lost_;
  std::vector<engine::ElementChange> unknown_;
  std::string leftAlone_;
};

int TellWhatLoadWouldDo(Session& session, const LoadOptions& options, Report& report) {
  engine::StoredState state;
  if (const int status = session.ReadMark(options.name, state); status != kDone) return status;
  DryRun dryRun(session, options, state);
  dryRun.Describe(report);
  if (!options.dryRun) return session.Keep(report);
  report.Put("written", JsonValue());
  report.Print(session.GetProgram());
  return kDone;
}

// With no place to keep it, a load is a dry run (decision 45).
int RunLoad(Program& program, LoadOptions options) {
  Session session(program);
  if (const int status = session.StartWithScene(); status != kDone) return status;
  const std::string typed = options.name;
  if (const int status = session.ChooseMark(typed, options.name); status != kDone) return status;
  Report report;
  if (const int status = session.CheckTextures(report); status != kDone) return status;
  const bool keeps = program.write || !program.output.empty();
  return options.dryRun || !keeps ? TellWhatLoadWouldDo(session, options, report)
                                  : LoadAndKeep(session, options, report);
}

}  // namespace

void AddLoad(Arguments& arguments, Program& program) {
  Verb verb = arguments.AddVerb("load", "Bring the scene back into a recorded state");
  AddScene(verb, program);
  auto options = std::make_shared<LoadOptions>();
  verb.Add("STAGEMARK", options->name, "Its name, or a pattern that means it alone").Required();
  AddParts(verb, options->parts);
  AddStrict(verb, program);
  AddKeeping(verb, program);
  verb.AddFlag("-n,--dry-run", options->dryRun,
               "Say what would change and what would be lost; load and write nothing")
      .Excludes("--write")
      .Excludes("--output");
  verb.Footer(
      "Without --write and -o it is a dry run, too. \"Will be lost\" is what the scene holds now, "
      "loading changes, and no Stagemark has recorded.\n"
      "--parts and --without are for this load only: neither the scene nor your preferences keep "
      "them.\n\n"
      "Examples:\n"
      "  stagemarks load room.c4d Day --dry-run\n"
      "  stagemarks load room.c4d Day --write\n"
      "  stagemarks load room.c4d Day --parts camera,layers --write\n"
      "  stagemarks load room.c4d Day -o day.c4d");
  verb.Does([&program, options] { return RunLoad(program, *options); });
}

}  // namespace commandline
