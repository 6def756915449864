#include "program/pictures/PartsInUse.h"

#include <algorithm>

namespace pictures {

namespace {

std::string WordOf(const std::string& option) {
  const engine::PartRow* row = engine::FindPartByLabel(option);
  return row ? row->word : option;
}

bool Holds(const std::vector<std::string>& names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

// "Only these" wins over the options; "all but these" only takes away.
bool IsWanted(const PartChoice& choice, const std::string& part, bool isOn) {
  if (!choice.parts.empty()) return Holds(choice.parts, part);
  return isOn && !Holds(choice.without, part);
}

}  // namespace

engine::Parts PartsToShow(const PartChoice& choice) {
  engine::Parts parts;
  for (const engine::PartRow& row : engine::kPartRows)
    parts.set(engine::IndexOf(row.part), IsWanted(choice, row.word, true));
  return parts;
}

engine::Parts PartsToLoad(const StagemarksDialog& dialog, const PartChoice& choice) {
  engine::Parts parts;
  for (const auto& [option, isOn] : dialog.Options()) {
    if (const engine::PartRow* row = engine::FindPartByLabel(option))
      parts.set(engine::IndexOf(row->part), IsWanted(choice, row->word, isOn));
  }
  return parts;
}

std::vector<std::string> WordsToLoad(const StagemarksDialog& dialog, const PartChoice& choice) {
  std::vector<std::string> words;
  for (const auto& [option, isOn] : dialog.Options()) {
    if (IsWanted(choice, WordOf(option), isOn)) words.push_back(WordOf(option));
  }
  return words;
}

// The dialog reads its options from the document again when events are delivered, which must wait
// until the load is done.
PartsInUse::PartsInUse(const StagemarksDialog& dialog, host::BaseDocument& doc,
                       const PartChoice& choice)
    : dialog_(dialog), doc_(doc), before_(*doc.GetDataInstance()) {
  for (const auto& [option, isOn] : dialog.Options()) {
    const bool wanted = IsWanted(choice, WordOf(option), isOn);
    if (wanted != isOn && dialog_.Choose(option)) toggled_.push_back(option);
  }
  touched_ = KeysThatDiffer(before_, *doc.GetDataInstance());
}

// Options are pressed back first, which writes into the scene once more; then the keys get the very
// values that stood there, or go where there were none.
PartsInUse::~PartsInUse() {
  for (const std::string& option : toggled_) dialog_.Choose(option);
  PutBack(touched_, before_, *doc_.GetDataInstance());
}

// By value and not by position: the dialog may have written in another order. One look-up a key.
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

}  // namespace pictures
