#include "engine/editing/StepwiseEdit.h"

#include <utility>

namespace engine {

StepwiseRun::StepwiseRun(host::BaseDocument& doc, StepwiseEdit edit)
    : edit_(std::move(edit)), scope_(doc, edit_.name) {}

// The scope is destroyed after this and would keep what was done as a step.
StepwiseRun::~StepwiseRun() {
  if (!ended_) Stop();
}

bool StepwiseRun::Advance() {
  if (ended_) return false;
  if (done_ < edit_.steps) {
    // Counted first: a step that throws is not done again.
    edit_.step(done_++);
    return true;
  }
  if (edit_.finish) edit_.finish();
  ended_ = true;
  return false;
}

double StepwiseRun::Share() const {
  return edit_.steps == 0 ? 1 : static_cast<double>(done_) / static_cast<double>(edit_.steps);
}

void StepwiseRun::Stop() {
  ended_ = true;
  scope_.Cancel();
}

// Left by `return false` the run is destroyed unfinished, and takes back what it did.
bool RunWhole(host::BaseDocument& doc, StepwiseEdit edit, const ProgressCallback& progress) {
  StepwiseRun run(doc, std::move(edit));
  do {
    if (progress && !progress(run.Share())) return false;
  } while (run.Advance());
  return true;
}

}  // namespace engine
