// AutosaveWorker: writes copies of documents to files on a thread of its own, one at a time,
// through a door of its own whose ledger is handed to the door in use afterwards. It owns the copy
// while it works. Called from the main thread.
#pragma once

#include <QObject>
#include <functional>
#include <memory>
#include <thread>

#include "program/desktop/SlowEnd.h"
#include "program/desktop/recovery/AutosaveFolder.h"

namespace desktop {

struct AutosaveJob {
  OwnedDocument copy;
  AutosaveFiles files;
  std::string note;
};

class AutosaveWorker : public QObject {
 public:
  AutosaveWorker() = default;
  ~AutosaveWorker() override;

  bool IsBusy() const { return thread_.joinable(); }
  // Writes the note, then the scene. `done` hears on the main thread how it went. Not while it is
  // busy.
  void Start(AutosaveJob job, std::function<void(const engine::Status&)> done);
  // Waits for the present job, if there is one, and tells of it at once.
  void Finish();

 private:
  void Write();

  AutosaveJob job_;
  std::function<void(const engine::Status&)> done_;
  engine::Status status_;
  std::vector<engine::LedgerEntry> entries_;
  SlowEnd ended_;
  std::thread thread_;
};

}  // namespace desktop
