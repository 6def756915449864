// AutosaveWorker: writes copies of documents to files as a background job, one at a time, through a
// file system of its own, whose ledger is added to the given one afterwards. It owns the copy while
// it works. Called from the main thread.
#pragma once

#include <functional>

#include "program/desktop/background/BackgroundJob.h"
#include "program/desktop/background/DeferredDeletion.h"
#include "program/desktop/recovery/AutosaveFolder.h"

namespace desktop {

struct AutosaveJob {
  OwnedDocument copy;
  AutosaveFiles files;
  std::string note;
};

class AutosaveWorker {
 public:
  explicit AutosaveWorker(engine::Ledger& ledger) : ledger_(ledger) {}

  bool IsBusy() const { return job_.IsRunning(); }
  // Writes the note, then the scene. `done` hears on the main thread how it went. Not while it is
  // busy.
  void Start(AutosaveJob order, std::function<void(const engine::Status&)> done);
  // Waits for the present job, if there is one, and tells of it at once.
  void Finish() { job_.Finish(); }

 private:
  void Write();
  void End(const std::string& problem);

  engine::Ledger& ledger_;
  AutosaveJob order_;
  std::function<void(const engine::Status&)> done_;
  engine::Status status_;
  std::vector<engine::LedgerEntry> entries_;
  DeferredDeletion deletion_;
  BackgroundJob job_{"keeping a copy of unsaved work"};  // last: it ends before what it uses
};

}  // namespace desktop
