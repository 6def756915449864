#include <algorithm>

#include "program/commandline/Arguments.h"
#include "program/commandline/LoadParts.h"
#include "program/pictures/DialogLabels.h"

namespace commandline {

namespace {

struct OptionChoices {
  std::vector<std::string> toggles;
  bool save = false;
};

int ToggleAll(Session& session, const std::vector<std::string>& names) {
  for (const std::string& name : names) {
    const auto options = session.Dialog().Options();
    const bool known = std::any_of(options.begin(), options.end(),
                                   [&](const auto& option) { return option.first == name; });
    if (!known) {
      std::string text = "There is no option \"" + name + "\". There are:";
      for (const auto& option : options) text += "\n  " + option.first;
      session.GetProgram().terminal.Error(text);
      return kUsage;
    }
    session.Dialog().Choose(name);
  }
  return kDone;
}

using States = std::vector<std::pair<std::string, bool>>;

// What the dialog says once it has read the scene anew, of a scene with this data.
States ReadAnew(Session& session) {
  host::EventAdd();
  session.App().DeliverEvents();
  return session.Dialog().Options();
}

bool IsOn(const States& states, const std::string& option) {
  return std::any_of(states.begin(), states.end(),
                     [&](const auto& state) { return state.first == option && state.second; });
}

// Those of the options that were turned and that the scene will not have so when it is opened
// again. Objects is never kept in a scene, and one without a choice of its own keeps nothing.
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

int RunOptions(Program& program, const OptionChoices& choices) {
  Session session(program);
  if (const int status = session.StartWithScene(); status != kDone) return status;
  const States before = session.Dialog().Options();
  const host::BaseContainer old = *session.Document().GetDataInstance();
  if (const int status = ToggleAll(session, choices.toggles); status != kDone) return status;
  const States wanted = session.Dialog().Options();
  Report report;
  report.PutObject("options", JsonMembers(wanted.begin(), wanted.end()));
  for (const auto& [name, on] : wanted) {
    report.Line(std::string(on ? "[x] " : "[ ] ") + name);
  }
  if (choices.save) {
    session.Dialog().Choose(pictures::kSaveDefaults);
    report.Line("Saved as the defaults for scenes without a choice of their own.");
  }
  const auto lost =
      choices.toggles.empty() ? std::vector<std::string>() : NotKept(session, before, wanted, old);
  report.Put("notKept", lost);
  const bool keeps = program.write || !program.output.empty();
  if (!choices.toggles.empty()) {
    const int status = session.Keep(report);
    if (status != kDone || lost.empty() || !keeps) return status;
    SayNotKept(session, lost);
    return choices.save ? kDone : kFailed;
  }
  report.Print(program.json);
  return session.CheckLedger();
}

}  // namespace

void AddOptions(Arguments& arguments, Program& program) {
  Verb verb =
      arguments.AddVerb("options", "Show or change what a recording takes in and a recall applies");
  AddScene(verb, program);
  auto choices = std::make_shared<OptionChoices>();
  verb.Add("--toggle", choices->toggles,
           "Turn an option on or off, by the name in the list; may be given several times")
      .Word("OPTION");
  verb.AddFlag("--save-default", choices->save,
               "Make these the defaults for scenes without a choice of their own");
  AddKeeping(verb, program);
  verb.Footer(
      "A scene keeps its options from its first Stagemark on, all but Objects; `load` has --parts "
      "and --without for one load.\n\n"
      "Examples:\n"
      "  stagemarks options room.c4d\n"
      "  stagemarks options room.c4d --toggle Layers --toggle Materials --write");
  verb.Does([&program, choices] { return RunOptions(program, *choices); });
}

}  // namespace commandline
