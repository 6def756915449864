// Autosave: keeps copies of unsaved documents in the state folder, for the case that the program
// does not end well. It never touches the documents nor their files: a copy is taken on the main
// thread and written by a worker. Saving or closing a document, and ending well, remove what was
// kept. It does not own the documents. Main thread.
#pragma once

#include <QObject>
#include <QTimer>
#include <chrono>
#include <functional>
#include <unordered_map>

#include "engine/application/Application.h"
#include "program/desktop/background/BackgroundJob.h"
#include "program/desktop/background/DeferredDeletion.h"
#include "program/desktop/recovery/AutosaveFolder.h"
#include "program/desktop/recovery/LostWork.h"
#include "program/desktop/recovery/SavedPreviews.h"

namespace desktop {

struct AutosaveJob {
  OwnedDocument copy;
  AutosaveFiles files;
  std::string note;
};

// Writes copies of documents to files as a background job, one at a time, through a file system of
// its own, whose ledger is added to the given one afterwards. It owns the copy while it works.
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

// When a changed document is due, by what would be lost: at once after the first act since it was
// opened or saved; then when nothing was done for `idle`, and `longest` after the first act that is
// not kept. Taking a copy holds the person up, so that the next one waits `costs` times as long as
// that took, but no longer than `longestPause`.
struct AutosaveRules {
  std::chrono::milliseconds idle{4000};
  std::chrono::milliseconds longest{20000};
  int costs = 50;
  std::chrono::milliseconds longestPause{8000};
};

class Autosave : public QObject {
 public:
  using Clock = std::chrono::steady_clock;
  // `now`: tells the time.
  explicit Autosave(const engine::Application& application, AutosaveRules rules = {},
                    std::function<Clock::time_point()> now = &Clock::now);
  // Leaves what was kept, as a crash does.
  ~Autosave() override;

  // Told once when keeping fails, and once more after it worked again.
  std::function<void(const std::string&)> failed;

  // Takes up what changed since the last call. Cheap when nothing did.
  void Follow();
  // Keeps one document that is due; comes round by itself as long as something is not kept.
  void Tick();
  // While a copy is being written.
  bool IsBusy() const { return worker_.IsBusy(); }
  // Keeps every changed document and waits until that is done.
  void KeepNow();
  // The lost document that was opened as `doc` is kept here from now on.
  void Adopt(const LostDocument& lost, const host::BaseDocument& doc);
  // The program ends well: nothing is kept any more.
  void End();

 private:
  struct Kept {
    host::ULLONG seen = 0;    // change counts: the last one seen and the one that is kept
    host::ULLONG kept = 0;    // 0: none yet
    Clock::time_point first;  // change that is not kept, and the last one
    Clock::time_point last;
    Clock::time_point next;  // not tried before
  };

  void FollowOne(const host::BaseDocument& doc, Kept& state);
  void ForgetClosed(const std::vector<host::BaseDocument*>& open);
  bool IsDue(const Kept& state) const;
  void Keep(host::BaseDocument& doc, Kept& state);
  void Done(host::ULLONG document, host::ULLONG count, const engine::Status& status);

  const engine::Application& application_;
  AutosaveRules rules_;
  std::function<Clock::time_point()> now_;
  AutosaveFolder folder_;
  SavedPreviews previews_;
  std::unordered_map<host::ULLONG, Kept> documents_;  // the changed ones, by number
  bool told_ = false;
  bool ended_ = false;
  QTimer tick_;
  AutosaveWorker worker_;  // last: it ends before what it tells of
};

}  // namespace desktop
