// BulkEdits: what is said after the entries of the menu "Edit" that change all checked Stagemarks
// at once. Any thread.
#pragma once

#include <string>
#include <vector>

namespace outcome {

struct BulkEdit {
  const char* entry;     // of the menu "Edit"
  const char* changed;   // what is said afterwards, % for what was selected and & for the names
  const char* same;      // where nothing changed
  const char* selected;  // what has to be selected in the scene, empty for nothing
};

// Null for an entry of another kind.
const BulkEdit* FindBulkEdit(const std::string& entry);
// `selected`: what was selected, as a person reads it; `names`: of the Stagemarks.
std::string Sentence(const BulkEdit& edit, bool changed, const std::string& selected,
                     const std::vector<std::string>& names);

}  // namespace outcome
