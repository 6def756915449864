// The verb states: Stagemarks as text, out of a scene and into one.
#include <algorithm>
#include <iostream>
#include <iterator>

#include "engine/states/StateText.h"
#include "program/commandline/Arguments.h"
#include "program/commandline/Session.h"

namespace commandline {

namespace {

using engine::TakenIn;
using Names = std::vector<std::string>;

constexpr const char* kExport = "export";
constexpr const char* kImport = "import";

struct StatesOptions {
  std::string action;
  Names names;  // behind the scene: Stagemarks, or the text to take in
  Names only;
  Names renamed;
  bool replace = false;
  bool keep = false;
  bool evenEmpty = false;
  bool dryRun = false;
};

// Streamed: the text of a large scene is larger than the scene.
int Export(Session& session, const StatesOptions& options) {
  std::vector<engine::StoredState> states;
  if (const int status = session.ReadMarks(options.names, states); status != kDone) return status;
  const host::BaseDocument& doc = session.Document();
  const bool whole = engine::WriteStatesAsText(
      doc, states, doc.GetDocumentName().GetString().ToUtf8(), [](std::string_view text) {
        return static_cast<bool>(
            std::cout.write(text.data(), static_cast<std::streamsize>(text.size())));
      });
  return whole ? kDone : kFailed;
}

// The new names by the old ones, "Day=Evening" each.
int ReadRenamed(Program& program, const Names& typed, std::map<std::string, std::string>& names) {
  for (const std::string& pair : typed) {
    const std::size_t equals = pair.find('=');
    if (equals == 0 || equals == std::string::npos || equals + 1 == pair.size()) {
      program.terminal.Error(Listed({pair}) + " renames nothing: write OLD=NEW.");
      return kUsage;
    }
    names[pair.substr(0, equals)] = pair.substr(equals + 1);
  }
  return kDone;
}

engine::Result<std::string> ReadWhole(Session& session, const std::string& path) {
  if (path == "-")
    return std::string(std::istreambuf_iterator<char>(std::cin), std::istreambuf_iterator<char>());
  return session.Files().ReadFile(AbsolutePath(path));
}

class Import {
 public:
  Import(Session& session, const StatesOptions& options)
      : session_(session), program_(session.GetProgram()), options_(options) {}

  int Run() {
    if (options_.names.size() != 1) {
      program_.terminal.Error(
          "Which text is to be taken in? Give one file, or - for what is typed.");
      return kUsage;
    }
    const auto text = ReadWhole(session_, options_.names[0]);
    if (!text) {
      program_.terminal.Error(text.Message());
      return kFailed;
    }
    engine::TakeInOptions choices;
    if (const int status = ReadRenamed(program_, options_.renamed, choices.names); status != kDone)
      return status;
    if (!options_.only.empty())
      choices.isWanted = [this](const std::string& name) { return IsMeant(name); };
    choices.sameName = options_.replace ? engine::SameName::Replaced
                       : options_.keep  ? engine::SameName::Kept
                                        : engine::SameName::Refused;
    choices.evenEmpty = options_.evenEmpty;
    const auto taken = engine::TakeInStates(session_.Document(), text.Value(), choices);
    if (!taken) {
      program_.terminal.Error(taken.Message() + Advice(taken.Message()));
      return kFailed;
    }
    return Tell(taken.Value());
  }

 private:
  bool IsMeant(const std::string& name) const {
    return std::ranges::any_of(options_.only, [&](const std::string& typed) {
      return name == typed || (IsPattern(typed) && MatchesPattern(name, typed));
    });
  }

  // By the end of the sentence: the engine's messages know no options of this program.
  static std::string Advice(const std::string& message) {
    if (message.ends_with("already."))
      return " Give it another name with --rename, or say --replace or --keep.";
    return message.ends_with("is in the scene.") ? " --even-empty takes it in all the same." : "";
  }

  int Tell(const TakenIn& taken) {
    host::EventAdd();
    session_.App().DeliverEvents();
    static constexpr const char* kOutcomes[] = {"added", "replaced", "kept"};
    static constexpr const char* kWords[] = {"Added", "Replaced", "Kept as it was:"};
    Report report;
    report.PutList("stagemarks");
    for (const TakenIn::State& state : taken.states) {
      const auto outcome = static_cast<std::size_t>(state.outcome);
      report.Append("stagemarks", {{"name", state.name},
                                   {"outcome", kOutcomes[outcome]},
                                   {"records", state.records},
                                   {"leftOut", state.leftOut}});
      report.Line(std::string(kWords[outcome]) + " " + Listed({state.name}) +
                  (state.leftOut == 0 ? "."
                                      : ", without " + Counted(state.leftOut, "record") +
                                            " of what is not in the scene."));
    }
    if (taken.states.empty()) report.Line("The text has none of these Stagemarks.");
    report.PutObject(
        "found",
        {{"byIdentity", taken.byIdentity}, {"byPath", taken.byPath}, {"byName", taken.byName}});
    report.Put("ambiguous", taken.ambiguous);
    report.Put("missing", taken.missing);
    if (taken.byPath + taken.byName > 0) {
      report.Line("Found " + Counted(taken.byIdentity, "element") + " by identity, " +
                  std::to_string(taken.byPath) + " at the same place, " +
                  std::to_string(taken.byName) + " by name alone.");
    }
    AddElements(report, "Not in the scene", taken.missing);
    AddElements(report, "Several of that name, none at that place", taken.ambiguous);
    if (!options_.dryRun) return session_.Keep(report);
    report.Line("Nothing was written (--dry-run).");
    report.Print(program_);
    return kDone;
  }

  // For a person only the first few, unless -v asks for all; the report for a program has all.
  void AddElements(Report& report, const char* title, const Names& elements) const {
    constexpr std::size_t kMostListed = 10;
    if (elements.empty()) return;
    report.Line(std::string(title) + ":");
    const std::size_t shown =
        program_.verbose ? elements.size() : std::min(elements.size(), kMostListed);
    for (std::size_t i = 0; i < shown; ++i) report.Line("  " + Shown(elements[i]));
    if (shown < elements.size())
      report.Line("  and " + std::to_string(elements.size() - shown) + " more (-v lists all)");
  }

  Session& session_;
  Program& program_;
  const StatesOptions& options_;
};

// An export changes nothing, so a place to keep the scene is a mistake. In a `run` each step is
// told to write, which says nothing of what was typed.
int RunStates(Program& program, const StatesOptions& options) {
  const bool exports = options.action == kExport;
  if (exports && !program.open && (program.write || !program.output.empty())) {
    program.terminal.Error(
        "An export of states is printed: write it into a file with > FILE. The scene stays as it "
        "is.");
    return kUsage;
  }
  Session session(program);
  if (const int status = session.StartWithScene(); status != kDone) return status;
  return exports ? Export(session, options) : Import(session, options).Run();
}

}  // namespace

void AddStates(Arguments& arguments, Program& program) {
  Verb verb =
      arguments.AddVerb("states", "Stagemarks as text: out of a scene, or from a text into one");
  auto options = std::make_shared<StatesOptions>();
  verb.Add("ACTION", options->action, "What to do").OneOf({kExport, kImport}).Required();
  AddScene(verb, program);
  verb.Add("NAMES", options->names,
           "For export the Stagemarks, by name or pattern (default: all); for import the file with "
           "the text, - for standard input");
  verb.BeginSection("For import");
  AddOnly(verb, options->only);
  verb.Add("--rename", options->renamed, "Take in the Stagemark OLD as NEW; may be repeated")
      .Word("OLD=NEW")
      .OneWord();
  verb.AddFlag("--replace", options->replace, "Replace Stagemarks that have the same name");
  verb.AddFlag("--keep", options->keep, "Leave Stagemarks that have the same name as they are")
      .Excludes("--replace");
  verb.AddFlag("--even-empty", options->evenEmpty, "Also those of which the scene has no element");
  AddKeeping(verb, program);
  verb.AddFlag("--dry-run", options->dryRun, "Say what would be taken in, and write nothing")
      .Excludes("--write")
      .Excludes("--output");
  verb.Footer(
      "An element is found by its identity, else at its path, else by its name where it is the "
      "only "
      "one. The text is JSON with a line for each record; docs/STATES.md describes it.\n\n"
      "Examples:\n"
      "  stagemarks states export room.c4d > states.json\n"
      "  stagemarks states export room.c4d \"shot_0*\" > shots.json\n"
      "  stagemarks states import other.c4d states.json --replace --write\n"
      "  stagemarks states import other.c4d states.json --only Day --rename Day=Morning -o "
      "out.c4d");
  verb.Does([&program, options] { return RunStates(program, *options); });
}

}  // namespace commandline
