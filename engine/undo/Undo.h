// Undo for the programs: asking what can be undone, naming steps, and a scope that opens and closes
// a group. The published interface has the rest: BaseDocument::StartUndo, AddUndo, EndUndo, DoUndo,
// DoRedo. Main thread.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "engine/core/Progress.h"
#include "engine/undo/StepDifference.h"
#include "host/BaseDocument.h"

namespace engine {

bool CanUndo(const host::BaseDocument& doc);
bool CanRedo(const host::BaseDocument& doc);

// Name of the step that Undo or Redo would take, for menus; empty where there is none or it was
// never named.
std::string UndoName(const host::BaseDocument& doc);
std::string RedoName(const host::BaseDocument& doc);
// Names of all steps, empty for one never named: of those done, the oldest first; of those undone,
// the one that Redo takes first.
std::vector<std::string> DoneNames(const host::BaseDocument& doc);
std::vector<std::string> UndoneNames(const host::BaseDocument& doc);
// Names the open group; the first name stays. Outside a group nothing happens.
void NameUndo(host::BaseDocument& doc, const std::string& name);

// Forgets what Redo would do and destroys what that keeps.
void ForgetUndone(host::BaseDocument& doc);

// Forgets all steps and destroys what they keep.
void ClearUndo(host::BaseDocument& doc);

// Opens a group, or goes on with the open one, for as long as the scope lives. The outermost scope
// closes the group; EndUndo inside it leaves the group open.
class UndoScope {
 public:
  UndoScope(host::BaseDocument& doc, const std::string& name);
  UndoScope(const UndoScope&) = delete;
  UndoScope& operator=(const UndoScope&) = delete;
  ~UndoScope();

  // Takes back everything registered since the scope began, without leaving a step to redo.
  void Cancel();

  // Differences from the state when the scope began (for scene camera and active render settings:
  // when the outermost one did), with lines of the first `most` elements. Nothing when it was
  // stopped.
  std::optional<StepDifference> Difference(std::size_t most,
                                           const ProgressCallback& progress = {}) const;

 private:
  host::BaseDocument& doc_;
  std::size_t begin_;
};

// The name that the innermost ActName gives; empty where there is none.
const std::string& PresentAct();

// While it lives, a group that ends without a name of its own gets this one: so a program names the
// steps of a plug-in, which names none, after what a person pressed. The innermost counts.
class ActName {
 public:
  explicit ActName(std::string name);
  ActName(const ActName&) = delete;
  ActName& operator=(const ActName&) = delete;
  ~ActName();

 private:
  std::string former_;
};

}  // namespace engine
