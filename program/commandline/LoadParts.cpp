#include "program/commandline/LoadParts.h"

#include <algorithm>

#include "engine/states/Difference.h"

namespace commandline {

namespace {

std::string WordOf(const std::string& option) {
  const engine::PartRow* row = engine::FindPartByLabel(option);
  return row ? row->word : option;
}

std::vector<std::string> AllWords() {
  std::vector<std::string> words;
  for (const engine::PartRow& row : engine::kPartRows) words.emplace_back(row.word);
  return words;
}

bool Holds(const std::vector<std::string>& names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

bool IsWanted(const PartChoice& choice, const std::string& part, bool isOn) {
  if (!choice.parts.empty()) return Holds(choice.parts, part);
  return isOn && !Holds(choice.without, part);
}

void AddChoice(Verb verb, PartChoice& choice, const char* only, const char* butThese) {
  Option parts = verb.Add("--parts", choice.parts, only);
  Option without = verb.Add("--without", choice.without, butThese);
  for (Option* option : {&parts, &without}) {
    option->Separated(',').OneWord().OneOf(AllWords()).Word("PARTS");
  }
  without.Excludes("--parts");
}

}  // namespace

void AddParts(Verb verb, PartChoice& choice) {
  AddChoice(verb, choice, "Apply these only, whatever the options say, with commas between them",
            "Apply all that the options say but these, with commas between them");
}

void AddPartsToShow(Verb verb, PartChoice& choice) {
  AddChoice(verb, choice, "Look at these only, with commas between them",
            "Look at all but these, with commas between them");
}

engine::Parts PartsToShow(const PartChoice& choice) {
  engine::Parts parts;
  for (const engine::PartRow& row : engine::kPartRows)
    parts.set(engine::IndexOf(row.part), IsWanted(choice, row.word, true));
  return parts;
}

engine::Parts PartsToLoad(Session& session, const PartChoice& choice) {
  engine::Parts parts;
  for (const auto& [option, isOn] : session.Dialog().Options()) {
    if (const engine::PartRow* row = engine::FindPartByLabel(option))
      parts.set(engine::IndexOf(row->part), IsWanted(choice, row->word, isOn));
  }
  return parts;
}

std::vector<std::string> WordsToLoad(Session& session, const PartChoice& choice) {
  std::vector<std::string> words;
  for (const auto& [option, isOn] : session.Dialog().Options()) {
    if (IsWanted(choice, WordOf(option), isOn)) words.push_back(WordOf(option));
  }
  return words;
}

std::string LeftAloneText(Session& session, const PartChoice& choice,
                          const host::BaseContainer& record) {
  if (!choice.parts.empty()) return "";
  const engine::Parts off = ~PartsToLoad(session, choice) & PartsToShow(choice);
  if (off.none()) return "";
  engine::CompareOptions compare;
  compare.parts = off;
  compare.mostFields = 0;
  const auto held = engine::ContentsOf(session.Document(), record, compare);
  std::vector<std::string> labels;
  for (const engine::PartRow& row : engine::kPartRows) {
    if (off[engine::IndexOf(row.part)] && held.Of(row.part).Sum() > 0)
      labels.emplace_back(row.label);
  }
  if (labels.empty()) return "";
  return Listed(labels) + (labels.size() == 1 ? " is" : " are") +
         " off in the options of the scene and left alone; --parts overrides that.";
}

std::string PartsText(const PartChoice& choice, const std::vector<std::string>& applied) {
  const bool only = !choice.parts.empty();
  const std::string text = Joined(only ? applied : choice.without);
  if (text.empty()) return "";
  return only ? " (" + text + " only)" : " (without " + text + ")";
}

// The dialog reads its options from the document again when events are delivered, which must wait
// until the load is done.
PartsInUse::PartsInUse(Session& session, const PartChoice& choice)
    : session_(session), before_(*session.Document().GetDataInstance()) {
  for (const auto& [option, isOn] : session.Dialog().Options()) {
    const bool wanted = IsWanted(choice, WordOf(option), isOn);
    if (wanted != isOn && session.Dialog().Choose(option)) toggled_.push_back(option);
  }
  touched_ = KeysThatDiffer(before_, *session.Document().GetDataInstance());
}

PartsInUse::~PartsInUse() {
  for (const std::string& option : toggled_) session_.Dialog().Choose(option);
  PutBack(touched_, before_, *session_.Document().GetDataInstance());
}

std::vector<host::LONG> KeysThatDiffer(const host::BaseContainer& one,
                                       const host::BaseContainer& other) {
  std::vector<host::LONG> keys;
  for (host::LONG i = 0; i < one.GetCount(); ++i) {
    const host::LONG key = one.GetIndexId(i);
    if (other.FindIndex(key) == host::NOTOK || !(one.GetData(key) == other.GetData(key)))
      keys.push_back(key);
  }
  for (host::LONG i = 0; i < other.GetCount(); ++i) {
    if (const host::LONG key = other.GetIndexId(i); one.FindIndex(key) == host::NOTOK)
      keys.push_back(key);
  }
  return keys;
}

void PutBack(const std::vector<host::LONG>& keys, const host::BaseContainer& from,
             host::BaseContainer& data) {
  for (const host::LONG key : keys) {
    if (from.FindIndex(key) == host::NOTOK) {
      data.RemoveData(key);
    } else {
      data.SetData(key, from.GetData(key));
    }
  }
}

}  // namespace commandline
