#include "program/commandline/LoadParts.h"

#include "engine/states/Difference.h"

namespace commandline {

namespace {

void AddChoice(Verb verb, PartChoice& choice, const char* only, const char* butThese) {
  Option parts = verb.Add("--parts", choice.parts, only);
  Option without = verb.Add("--without", choice.without, butThese);
  for (Option* option : {&parts, &without}) {
    option->Separated(',').OneWord().OneOf(AllWords()).Word("PARTS");
  }
  without.Excludes("--parts");
}

}  // namespace

std::vector<std::string> AllWords() {
  std::vector<std::string> words;
  words.reserve(std::size(engine::kPartRows));
  for (const engine::PartRow& row : engine::kPartRows) words.emplace_back(row.word);
  return words;
}

void AddParts(Verb verb, PartChoice& choice) {
  AddChoice(verb, choice, "Apply these only, whatever the options say, with commas between them",
            "Apply all that the options say but these, with commas between them");
}

void AddPartsToShow(Verb verb, PartChoice& choice) {
  AddChoice(verb, choice, "Look at these only, with commas between them",
            "Look at all but these, with commas between them");
}

engine::Parts PartsToLoad(Session& session, const PartChoice& choice) {
  return pictures::PartsToLoad(session.Dialog(), choice);
}

std::vector<std::string> WordsToLoad(Session& session, const PartChoice& choice) {
  return pictures::WordsToLoad(session.Dialog(), choice);
}

// Only of parts that are off in the options, not of those that were left out on purpose, and only
// where the Stagemark holds something of them.
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

}  // namespace commandline
