#include <algorithm>
#include <cctype>
#include <optional>

#include "program/commandline/Arguments.h"
#include "program/commandline/LoadParts.h"
#include "program/pictures/DialogLabels.h"

namespace commandline {

namespace {

struct OptionChoices {
  std::vector<std::string> toggles;
  std::vector<std::string> on;
  std::vector<std::string> off;
  bool save = false;

  bool IsEmpty() const { return toggles.empty() && on.empty() && off.empty(); }
};

bool AreSameWord(const std::string& a, const std::string& b) {
  return std::ranges::equal(a, b, [](unsigned char one, unsigned char other) {
    return std::tolower(one) == std::tolower(other);
  });
}

// The dialog's own spelling; also by the word that --parts has for it.
int FindOption(Session& session, const std::string& typed, std::pair<std::string, bool>& found) {
  std::string text = "There is no option \"" + Shown(typed) + "\". There are:";
  for (const auto& option : session.Dialog().Options()) {
    const engine::PartRow* part = engine::FindPartByLabel(option.first);
    if (AreSameWord(option.first, typed) || (part && AreSameWord(part->word, typed))) {
      found = option;
      return kDone;
    }
    text += "\n  " + option.first;
  }
  session.GetProgram().terminal.Error(text);
  return kUsage;
}

// `wanted`: on or off; nothing turns it round.
int TurnAll(Session& session, const std::vector<std::string>& names, std::optional<bool> wanted) {
  for (const std::string& name : names) {
    std::pair<std::string, bool> option;
    if (const int status = FindOption(session, name, option); status != kDone) return status;
    if (wanted != option.second) session.Dialog().Choose(option.first);
  }
  return kDone;
}

int Turn(Session& session, const OptionChoices& choices) {
  int status = TurnAll(session, choices.toggles, std::nullopt);
  if (status == kDone) status = TurnAll(session, choices.on, true);
  return status == kDone ? TurnAll(session, choices.off, false) : status;
}

using States = std::vector<std::pair<std::string, bool>>;

// The dialog's options after it has read the scene's present data anew.
States ReadAnew(Session& session) {
  host::EventAdd();
  session.App().DeliverEvents();
  return session.Dialog().Options();
}

bool IsOn(const States& states, const std::string& option) {
  return std::any_of(states.begin(), states.end(),
                     [&](const auto& state) { return state.first == option && state.second; });
}

// The options that were turned and that the scene will not have so when it is opened again. Objects
// is never kept in a scene, and one without a choice of its own keeps nothing. Found out by trying:
// the scene's data is put back as it was before, read by the dialog, and put right again. An option
// is the scene's own when it is so with the turned data only.
std::vector<std::string> NotKept(Session& session, const States& before, const States& wanted,
                                 const host::BaseContainer& old) {
  host::BaseContainer& data = *session.Document().GetDataInstance();
  const host::BaseContainer turned = data;
  const States now = ReadAnew(session);
  const std::vector<host::LONG> keys = KeysThatDiffer(turned, old);
  PutBack(keys, old, data);
  const States without = ReadAnew(session);
  PutBack(keys, turned, data);
  ReadAnew(session);
  std::vector<std::string> lost;
  for (const auto& [option, isOn] : wanted) {
    if (isOn == IsOn(before, option)) continue;
    const bool isOfScene = IsOn(now, option) == isOn && IsOn(without, option) != isOn;
    if (!isOfScene) lost.push_back(option);
  }
  return lost;
}

std::size_t CountTurned(const States& before, const States& now) {
  return static_cast<std::size_t>(std::ranges::count_if(
      now, [&](const auto& option) { return option.second != IsOn(before, option.first); }));
}

// The scene's own choice comes with its first Stagemark.
void SayNotKept(Session& session, const std::vector<std::string>& lost) {
  const bool hasMarks = !session.Dialog().Marks().empty();
  session.GetProgram().terminal.Error(
      Listed(lost) + (lost.size() == 1 ? " is" : " are") + " not kept in the scene. " +
      (hasMarks ? "`stagemarks load SCENE STAGEMARK --parts PARTS` or `--without PARTS` chooses "
                  "for one load."
                : "A scene has options of its own from its first Stagemark on; --save-default "
                  "makes them your own."));
}

// The dialog says nothing either way.
bool SaveDefaults(Session& session) {
  const engine::Ledger& ledger = session.GetServices().ledger;
  const std::size_t mark = ledger.Mark();
  session.Dialog().Choose(pictures::kSaveDefaults);
  if (ledger.FailuresSince(mark).empty()) return true;
  session.GetProgram().terminal.Error("The options were not saved as the defaults.");
  return false;
}

int RunOptions(Program& program, const OptionChoices& choices) {
  Session session(program);
  if (const int status = session.StartWithScene(); status != kDone) return status;
  const States before = session.Dialog().Options();
  const host::BaseContainer old = *session.Document().GetDataInstance();
  if (const int status = Turn(session, choices); status != kDone) return status;
  const States wanted = session.Dialog().Options();
  Report report;
  report.PutObject("options", JsonMembers(wanted.begin(), wanted.end()));
  report.Put("changed", CountTurned(before, wanted));
  for (const auto& [name, on] : wanted) {
    report.Line(std::string(on ? "[x] " : "[ ] ") + name);
  }
  const bool isSaved = !choices.save || SaveDefaults(session);
  if (choices.save && isSaved)
    report.Line("Saved as the defaults for scenes without a choice of their own.");
  const auto lost =
      choices.IsEmpty() ? std::vector<std::string>() : NotKept(session, before, wanted, old);
  report.Put("notKept", lost);
  const bool keeps = program.write || !program.output.empty();
  if (!choices.IsEmpty()) {
    const int status = session.Keep(report);
    if (status != kDone || lost.empty() || !keeps) return status;
    SayNotKept(session, lost);
    return choices.save && isSaved ? kDone : kFailed;
  }
  report.Print(program);
  return session.CheckLedger();
}

}  // namespace

void AddOptions(Arguments& arguments, Program& program) {
  Verb verb =
      arguments.AddVerb("options", "Show or change what a recording takes in and a recall applies");
  AddScene(verb, program);
  auto choices = std::make_shared<OptionChoices>();
  verb.Add("--on", choices->on, "Turn options on, by their names in the list, in any case")
      .Offers("OPTION...", AllWords());
  verb.Add("--off", choices->off, "Turn options off").Offers("OPTION...", AllWords());
  verb.Add("--toggle", choices->toggles, "Turn options that are on off, and others on")
      .Offers("OPTION...", AllWords());
  verb.AddFlag("--save-default", choices->save,
               "Make these the defaults for scenes without a choice of their own");
  AddKeeping(verb, program);
  verb.Footer(
      "A scene keeps its options from its first Stagemark on, all but Objects; `load` has --parts "
      "and --without for one load.\n\n"
      "Examples:\n"
      "  stagemarks options room.c4d\n"
      "  stagemarks options room.c4d --on layers materials --off camera --write\n"
      "  stagemarks options room.c4d --toggle Layers --write");
  verb.Does([&program, choices] { return RunOptions(program, *choices); });
}

}  // namespace commandline
