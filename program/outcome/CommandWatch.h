// CommandWatch: stands by while a person presses a button of the Stagemarks dialog or chooses an
// entry of its menus, and says afterwards what came of it: from the rows before and after, the
// scene and the ledger. For a dialog of another kind it only reads the ledger. It owns nothing;
// services, dialog and document must outlive it. Main thread.
#pragma once

#include "host/BaseDocument.h"
#include "program/outcome/Outcome.h"
#include "program/pictures/StagemarksDialog.h"

namespace outcome {

class CommandWatch {
 public:
  // Begin it right before the command. `label`: of the button or entry.
  CommandWatch(const engine::Services& services, host::GeDialog& dialog, std::string label);
  // The folder for files that was chosen meanwhile.
  void ChoseFolder(const std::string& folder) { folder_ = folder; }
  // Textures that are not there to be exported.
  void Lacks(std::vector<std::string> textures) { missing_ = std::move(textures); }
  // The outcome of the command; `answered`: the result of the dialog's Command. Empty for commands
  // whose effect shows by itself and for those that a person called off.
  Outcome Finish(bool answered);

 private:
  struct Command;
  static const Command* Find(const std::string& label);
  // The outcome of each command. They compare the states before and after, and may add problems.
  void SayRecorded(bool answered, Outcome& outcome);
  void SayLoaded(bool answered, Outcome& outcome);
  void SayDeleted(bool answered, Outcome& outcome);
  void SayRenamed(bool answered, Outcome& outcome);
  void SayCleaned(bool answered, Outcome& outcome);
  void SayExported(bool answered, Outcome& outcome);
  void SaySavedDefaults(bool answered, Outcome& outcome);
  void SayBulkEdit(bool answered, Outcome& outcome);

  // Names of what is selected in the scene and has a say in the command.
  std::vector<std::string> SelectedInScene() const;
  bool SceneDataChanged() const;
  // Whether an operation on a file with that ending went well, or failed, since the beginning.
  bool Has(engine::Operation operation, const char* ending, bool succeeded) const;

  const engine::Services& services_;
  pictures::StagemarksDialog dialog_;
  std::string label_;
  const Command* command_;  // null for one that shows by itself, or of another dialog
  std::string folder_;
  std::size_t mark_;
  const host::BaseDocument* doc_;
  host::BaseContainer data_;        // of the document, before
  std::vector<std::string> names_;  // of the rows, and of those selected and checked
  std::vector<std::string> selected_;
  std::vector<std::string> checked_;
  std::vector<std::string> materials_;
  std::vector<std::string> inScene_;
  std::vector<std::string> missing_;  // textures
  std::string typed_;
  bool preview_ = false;
};

// Names of `before` that `after` does not have as often.
std::vector<std::string> NamesGone(const std::vector<std::string>& before,
                                   const std::vector<std::string>& after);

// A sentence about the deletion of these materials, which no Stagemark uses.
std::string CleanedSentence(const std::vector<std::string>& gone);
inline constexpr const char* kNoMarksForMaterials =
    "There are no Stagemarks in this scene that could say which materials are used. Nothing was "
    "deleted.";

}  // namespace outcome
