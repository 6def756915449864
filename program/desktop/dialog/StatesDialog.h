// StatesDialog: the open Stagemarks dialog as the panels beside it see it: which rows are chosen,
// what its options have loading leave out, and how a panel chooses a row or loads it, as a person
// does in the dialog. It owns nothing and finds the dialog anew each time. Main thread.
#pragma once

#include <string>
#include <vector>

#include "engine/states/RecordedParts.h"
#include "program/desktop/dialog/DialogDocks.h"
#include "program/pictures/DialogLabels.h"
#include "program/pictures/StagemarksDialog.h"

namespace desktop {

class ListView;

class StatesDialog {
 public:
  // `docks` outlive this.
  explicit StatesDialog(const DialogDocks& docks) : docks_(docks) {}

  bool IsOpen() const { return Find() != nullptr; }
  // In the order shown; none while it is closed. O(rows).
  std::vector<pictures::Mark> Rows() const;
  // Its list; null while it is closed.
  ListView* List() const;
  // Names of the selected rows, in the order of the list. O(rows).
  std::vector<std::string> Chosen() const;
  // Parts that loading brings back, by the dialog's menu "Options"; all without a dialog.
  engine::Parts PartsInForce() const;
  // Selects the rows of these names; false without such a dialog.
  bool Choose(const std::vector<std::string>& names) const;
  // Selects the row and presses the button "Load", with the questions and the report that come with
  // it. False where the dialog is closed, has no such row or cannot load now.
  bool Load(const std::string& name) const { return Press(name, pictures::kLoad); }
  // As Load, with the button "Delete", which asks first.
  bool Delete(const std::string& name) const { return Press(name, pictures::kDelete); }

 private:
  // Null while it is closed.
  host::GeDialog* Find() const;
  bool Press(const std::string& name, const char* label) const;

  const DialogDocks& docks_;
};

// "same as the scene", "differs in 1 thing", "differs in 7 things": of what loading would change.
QString SameOrDifferent(std::size_t things);

}  // namespace desktop
