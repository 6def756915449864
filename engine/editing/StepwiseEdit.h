// StepwiseEdit: an edit of very many elements as a row of small steps, so that whoever runs it can
// tell how far it is, let a window live between the steps, and stop it. An edit refers to elements
// of its document, which nobody else may change until it is over. Main thread.
#pragma once

#include <functional>
#include <string>

#include "engine/core/Progress.h"
#include "engine/undo/Undo.h"

namespace engine {

struct [[nodiscard]] StepwiseEdit {
  std::string name;  // of the undo step
  std::size_t steps = 0;
  // Does one step; called once for each number from 0 to `steps` - 1, in this order.
  std::function<void(std::size_t)> step;
  // After the last step and still within the undo step: selects and posts the change. May be empty.
  std::function<void()> finish;
};

// One run of an edit: an open undo group until it is destroyed. Destroyed before its end, also by
// an exception, it takes back all that was done.
class StepwiseRun {
 public:
  StepwiseRun(host::BaseDocument& doc, StepwiseEdit edit);
  StepwiseRun(const StepwiseRun&) = delete;
  StepwiseRun& operator=(const StepwiseRun&) = delete;
  ~StepwiseRun();

  // Does the next step; after the last one, finishes the edit. False when nothing is left to do.
  bool Advance();
  // Share of the steps that are done, 0..1.
  double Share() const;
  const std::string& Name() const { return edit_.name; }
  // Takes back all that was done, without leaving a step to redo. Nothing is left to do then.
  void Stop();

 private:
  StepwiseEdit edit_;
  std::size_t done_ = 0;
  bool ended_ = false;
  UndoScope scope_;
};

// All of it without a pause, asking `progress` before each step. False when that stopped it, and
// everything is as before.
bool RunWhole(host::BaseDocument& doc, StepwiseEdit edit, const ProgressCallback& progress = {});

}  // namespace engine
