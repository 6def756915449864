#include "program/desktop/recovery/AutosaveWorker.h"

#include <utility>

#include "engine/outside/RealFileSystem.h"
#include "engine/scenefile/SceneFile.h"

namespace desktop {

void AutosaveWorker::Start(AutosaveJob order, std::function<void(const engine::Status&)> done) {
  order_ = std::move(order);
  done_ = std::move(done);
  job_.Start([this](const BackgroundJob::Control&) { Write(); },
             [this](const std::string& problem) { End(problem); });
}

void AutosaveWorker::End(const std::string& problem) {
  deletion_.Take(std::move(order_.copy));
  order_ = {};
  for (engine::LedgerEntry& entry : entries_) ledger_.Add(std::move(entry));
  entries_.clear();
  std::exchange(done_, {})(problem.empty() ? status_ : engine::Status::Failure(problem));
}

void AutosaveWorker::Write() {
  engine::AbsentPerson nobody;
  engine::Ledger ledger;
  engine::RealFileSystem files(ledger, nobody);
  const auto pieces = engine::WriteScene(*order_.copy);
  status_ = pieces.GetStatus();
  if (pieces) status_ = files.ReplaceFile(order_.files.note, order_.note);
  if (pieces && status_) {
    const std::vector<std::string_view> views(pieces.Value().begin(), pieces.Value().end());
    status_ = files.ReplaceFile(order_.files.scene, views);
  }
  entries_ = ledger.Entries();
}

}  // namespace desktop
