// WorkerProcess: one run of the import child: starts it with its limits, takes what it sends until
// it ends, is too slow, sends too much or the work is stopped. The child never outlives this
// object. Main thread.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <string_view>

#include "engine/core/Result.h"
#include "engine/import/Import.h"
#include "engine/outside/ConfinedChild.h"

namespace engine {

// How a run ended.
enum class WorkerEnd {
  Exited,     // by itself; the number is its exit status
  Signalled,  // the number is the signal
  TimedOut,
  Stopped,  // the receiver wanted no more
};

struct WorkerOutcome {
  WorkerEnd end;
  int number;
};

class WorkerProcess {
 public:
  // Takes what arrived (empty: nothing new for a while); false stops the child.
  using Receiver = std::function<bool(std::string_view)>;

  // Starts `program kImportWorkerVerb path <descriptor>`; both are full paths. Exit status
  // kCannotRun later means that it could not be run.
  Status Start(const std::string& program, const std::string& path, const ImportLimits& limits);
  // Blocks until the run is over; `receive` is called at least every twentieth of a second.
  WorkerOutcome Run(const Receiver& receive);

 private:
  bool Step(const Receiver& receive);

  ConfinedChild child_;
  std::chrono::steady_clock::time_point deadline_;
  bool timedOut_ = false;
  bool stopped_ = false;
};

}  // namespace engine
