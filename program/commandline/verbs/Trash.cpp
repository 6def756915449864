// The verb trash: what was deleted or recorded over in a scene, and getting it back.
#include <algorithm>
#include <optional>

#include "engine/dialog/TerminalText.h"
#include "engine/states/Trash.h"
#include "program/commandline/Arguments.h"
#include "program/commandline/Session.h"

namespace commandline {

namespace {

using engine::DeletedState;
using engine::DeletedStates;
using Names = std::vector<std::string>;

constexpr const char* kListIt = "list";
constexpr const char* kRestore = "restore";
constexpr const char* kEmpty = "empty";
constexpr std::size_t kWidestName = 40;

struct TrashOptions {
  std::string action;
  Names names;
  std::string as;
};

// Padded, so that what follows stands in a column.
const char* Reason(const DeletedState& state) {
  return state.overwritten ? "recorded over" : "deleted      ";
}

JsonValue WithZone(const std::string& date) {
  return JsonValue::OrNothing(engine::StoredDate::FromText(date).WithZone());
}

JsonMembers Members(const DeletedState& state) {
  return {{"name", state.name},
          {"recorded", JsonValue::OrNothing(state.recorded)},
          {"recordedAt", WithZone(state.recorded)},
          {"deleted", JsonValue::OrNothing(state.deleted)},
          {"deletedAt", WithZone(state.deleted)},
          {"overwritten", state.overwritten}};
}

// The one deleted last on top, as the next to be given back.
int ListTrash(Session& session) {
  const DeletedStates& states = engine::DeletedStatesOf(session.Document());
  std::size_t width = 0;
  for (const DeletedState& state : states)
    width = std::max(width, std::min(engine::DisplayWidth(Shown(state.name)), kWidestName));
  Report report;
  report.PutList("trash");
  for (auto state = states.rbegin(); state != states.rend(); ++state) {
    report.Append("trash", Members(*state));
    report.Line(engine::PadRight(Shown(state->name), width) + "  " + Reason(*state) + " " +
                state->deleted + (state->recorded.empty() ? "" : ", recorded " + state->recorded));
  }
  if (states.empty()) report.Line("The trash of this scene is empty.");
  report.Print(session.GetProgram());
  return kDone;
}

// The position of that name; of several the one deleted last.
std::size_t PositionOf(const DeletedStates& states, const std::string& name) {
  std::size_t position = states.size();
  while (position > 0 && states[position - 1].name != name) --position;
  return position - 1;
}

// Those that were typed, patterns among them; none, with an error told, where one is not there or
// cannot be given back as asked.
std::optional<Names> FindInTrash(Session& session, const TrashOptions& options) {
  Program& program = session.GetProgram();
  Names known;
  for (const DeletedState& state : engine::DeletedStatesOf(session.Document()))
    known.push_back(state.name);
  for (const std::string& typed : options.names) {
    if (FindMarks({typed}, known)) continue;
    const std::string near = lookup::DidYouMean(typed, known);
    program.terminal.Error(
        "There is no \"" + Shown(typed) + "\" in the trash of this scene." +
        (near.empty() ? " `stagemarks trash list SCENE` shows what is there." : near));
    return std::nullopt;
  }
  Names names = FindMarks(options.names, known).Value();
  if (!options.as.empty() && names.size() != 1) {
    program.terminal.Error("--as gives one Stagemark another name, and these are " + Listed(names) +
                           ".");
    return std::nullopt;
  }
  return names;
}

// All names are looked up before the first is given back; positions are asked anew, since they
// move.
int Restore(Session& session, const TrashOptions& options) {
  const std::optional<Names> names = FindInTrash(session, options);
  if (!names) return kUsage;
  Program& program = session.GetProgram();
  host::BaseDocument& doc = session.Document();
  session.HoldSideFiles();
  Report report;
  report.PutList("restored");
  for (const std::string& name : *names) {
    const auto restored = engine::RestoreDeleted(
        session.GetServices(), doc, PositionOf(engine::DeletedStatesOf(doc), name), options.as);
    if (!restored) {
      const bool isTaken = restored.Message().ends_with("another name.");
      program.terminal.Error(restored.Message() + (isTaken ? " --as NEW does." : ""));
      return kFailed;
    }
    report.Append("restored", {{"name", name}, {"as", restored.Value()}});
    report.Line("Restored " + Listed({name}) +
                (restored.Value() == name ? "." : " as " + Listed({restored.Value()}) + "."));
  }
  host::EventAdd();
  session.App().DeliverEvents();
  return session.Keep(report);
}

int Empty(Session& session) {
  const std::size_t count = engine::DeletedStatesOf(session.Document()).size();
  const std::string what = Counted(count, "Stagemark");
  if (count > 0 &&
      !session.GetProgram().terminal.Ask("Forget " + what + " for good?  This cannot be undone.")) {
    session.GetProgram().terminal.Error("Nothing was forgotten.");
    return kFailed;
  }
  engine::EmptyTrash(session.Document());
  Report report;
  report.Put("forgotten", count);
  report.Line(count == 0 ? "The trash was empty." : "Forgot " + what + ".");
  return session.Keep(report);
}

int RunTrash(Program& program, const TrashOptions& options) {
  if ((options.action == kRestore) == options.names.empty()) {
    program.terminal.Error(options.names.empty()
                               ? "Which Stagemark is to come back? `stagemarks trash list SCENE` "
                                 "shows those there are."
                               : "Names are given to restore only.");
    return kUsage;
  }
  Session session(program);
  if (const int status = session.StartWithScene(); status != kDone) return status;
  if (options.action == kListIt) return ListTrash(session);
  return options.action == kRestore ? Restore(session, options) : Empty(session);
}

}  // namespace

void AddTrash(Arguments& arguments, Program& program) {
  Verb verb = arguments.AddVerb("trash", "Get back Stagemarks that were deleted or recorded over");
  auto options = std::make_shared<TrashOptions>();
  verb.Add("ACTION", options->action, "What to do").OneOf({kListIt, kRestore, kEmpty}).Required();
  AddScene(verb, program);
  verb.Add("NAMES", options->names,
           "For restore: those to get back, by name or by a pattern with * and ?");
  verb.Add("--as", options->as, "Restore one under this name").Word("NEW");
  AddKeeping(verb, program);
  verb.Footer(
      "A scene keeps the last 20 Stagemarks that were deleted or recorded over, with their render "
      "settings and preview images. Of several of one name the one deleted last comes back.\n\n"
      "Examples:\n"
      "  stagemarks trash list room.c4d\n"
      "  stagemarks trash restore room.c4d Day --write\n"
      "  stagemarks trash restore room.c4d Day --as \"Day, before\" --write\n"
      "  stagemarks trash empty room.c4d --yes --write");
  verb.Does([&program, options] { return RunTrash(program, *options); });
}

}  // namespace commandline
