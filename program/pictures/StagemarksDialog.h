// StagemarksDialog: the plug-in's dialog as a person uses it: fields, buttons, menu entries and
// rows are found by what they show, then pressed through the dialog's own events. It owns nothing;
// the dialog lives with its plug-in. Main thread.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "engine/core/Result.h"
#include "engine/dialog/Dialogs.h"
#include "engine/outside/Services.h"

namespace pictures {

// One row of the list.
struct Mark {
  std::string name;
  std::string date;  // as shown
  bool checked = false;
  bool current = false;  // recorded or loaded last
};

using FrameRange = std::pair<int, int>;
// "0:90"; from at most to, both in the dialog's range.
engine::Result<FrameRange> ReadFrameRange(const std::string& text);

class StagemarksDialog {
 public:
  // With `services`, which outlive it, each command that changes what is stored is an undo step and
  // fills the trash of the document; see UndoableCommand.
  explicit StagemarksDialog(host::GeDialog& dialog, const engine::Services* services = nullptr)
      : dialog_(&dialog), services_(services) {}

  host::GeDialog& Get() { return *dialog_; }
  // Whether the dialog is what this is for: it has the list and can load.
  bool Fits() const;
  // The gadget of that kind and label, the first of its kind without one; null where there is none.
  const engine::Gadget* Find(engine::GadgetKind kind, const std::string& label = "") const;

  // Rows in the order shown.
  std::vector<Mark> Marks() const;
  bool Has(const std::string& name) const;
  // Name of the row with the marker, empty where there is none.
  std::string Current() const;

  // The text of the name field, and whether a check box of that label is ticked.
  std::string TypedName() const;
  bool IsTicked(const std::string& checkbox) const;

  // The actions answer false when the dialog has no such thing or refused the event.
  bool TypeName(const std::string& name);
  bool Press(const std::string& button);
  bool Choose(const std::string& menuEntry);
  bool Tick(const std::string& checkbox, bool on);
  bool ChooseLayout(const std::string& entry);
  // The entry of the list of layouts that is chosen; empty where none is.
  std::string ChosenLayout() const;
  bool TypeFrames(int from, int to);
  bool Select(const std::string& name);
  // Names of the selected rows; SelectNames selects the rows that exist among them.
  std::vector<std::string> SelectedNames() const;
  bool SelectNames(const std::vector<std::string>& names);
  // Checks exactly the rows with these names. O(rows + names).
  bool CheckOnly(const std::vector<std::string>& names);
  std::vector<std::string> CheckedNames() const;

  // Entries of the Options menu with their marks, in menu order, the one that saves them left out.
  std::vector<std::pair<std::string, bool>> Options() const;
  // The list as text, without a line end.
  std::string ListText() const;

 private:
  const engine::Gadget& List() const;

  host::GeDialog* dialog_;
  const engine::Services* services_;  // may be null
};

}  // namespace pictures
