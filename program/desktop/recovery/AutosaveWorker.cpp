#include "program/desktop/recovery/AutosaveWorker.h"

#include <new>

#include "engine/outside/RealOutside.h"
#include "engine/scenefile/SceneFile.h"

namespace desktop {

AutosaveWorker::~AutosaveWorker() {
  if (thread_.joinable()) thread_.join();
}

void AutosaveWorker::Start(AutosaveJob job, std::function<void(const engine::Status&)> done) {
  job_ = std::move(job);
  done_ = std::move(done);
  thread_ = std::thread([this] {
    try {
      Write();
    } catch (const std::bad_alloc&) {
      status_ = engine::Status::Failure(
          "There was not enough memory for keeping a copy of unsaved work.");
    }
    QMetaObject::invokeMethod(
        this, [this] { Finish(); }, Qt::QueuedConnection);
  });
}

void AutosaveWorker::Finish() {
  if (!thread_.joinable()) return;
  thread_.join();
  ended_.Take(std::move(job_.copy));
  job_ = {};
  for (engine::LedgerEntry& entry : entries_)
    engine::Outside::Current().GetLedger().Add(std::move(entry));
  entries_.clear();
  std::exchange(done_, {})(status_);
}

void AutosaveWorker::Write() {
  engine::RealOutside outside;
  const auto pieces = engine::WriteScene(*job_.copy);
  status_ = pieces.GetStatus();
  if (pieces) status_ = outside.ReplaceFile(job_.files.note, job_.note);
  if (pieces && status_) {
    const std::vector<std::string_view> views(pieces.Value().begin(), pieces.Value().end());
    status_ = outside.ReplaceFile(job_.files.scene, views);
  }
  entries_ = outside.GetLedger().Entries();
}

}  // namespace desktop
