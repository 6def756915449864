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
#include "program/desktop/recovery/AutosaveWorker.h"
#include "program/desktop/recovery/LostWork.h"

namespace desktop {

// When a changed document is due: after so many acts, but not more often than `pause`; and
// `longest` after its first change.
struct AutosaveRules {
  int acts = 25;
  std::chrono::milliseconds pause{15000};
  std::chrono::milliseconds longest{120000};
};

class Autosave : public QObject {
 public:
  explicit Autosave(const engine::Application& application, AutosaveRules rules = {});
  // Leaves what was kept, as a crash does.
  ~Autosave() override;

  // Told once when keeping fails, and once more after it worked again.
  std::function<void(const std::string&)> failed;

  // Takes up what changed since the last call. Cheap when nothing did.
  void Follow();
  // Keeps every changed document and waits until that is done.
  void KeepNow();
  // The lost document that was opened as `doc` is kept here from now on.
  void Adopt(const LostDocument& lost, const host::BaseDocument& doc);
  // The program ends well: nothing is kept any more.
  void End();

 private:
  using Clock = std::chrono::steady_clock;
  struct Kept {
    host::ULLONG seen = 0;  // change counts: the last one seen and the one that is kept
    host::ULLONG kept = 0;
    int acts = 0;
    Clock::time_point changed;  // the first change that is not kept
    Clock::time_point tried;
  };

  void FollowOne(const host::BaseDocument& doc, Kept& state);
  void ForgetClosed(const std::vector<host::BaseDocument*>& open);
  void Tick();
  bool IsDue(const Kept& state) const;
  void Keep(host::BaseDocument& doc, Kept& state);
  void Done(host::ULLONG document, host::ULLONG count, const engine::Status& status);

  const engine::Application& application_;
  AutosaveRules rules_;
  AutosaveFolder folder_;
  std::unordered_map<host::ULLONG, Kept> documents_;  // the changed ones, by number
  bool told_ = false;
  bool ended_ = false;
  QTimer tick_;
  AutosaveWorker worker_;  // last: it ends before what it tells of
};

}  // namespace desktop
