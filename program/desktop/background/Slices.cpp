#include "program/desktop/background/Slices.h"

#include <QElapsedTimer>

#include "host/Application.h"
#include "program/desktop/background/DocumentBusy.h"
#include "program/desktop/background/Failure.h"

namespace desktop {

Slices::Slices(std::string work, std::function<bool()> advance, std::function<void()> failed)
    : work_(std::move(work)), advance_(std::move(advance)), failed_(std::move(failed)) {
  next_.setSingleShot(true);
  next_.setInterval(0);
  QObject::connect(&next_, &QTimer::timeout, &next_, [this] { Slice(); });
}

void Slices::Start() {
  isWanted_ = true;
  next_.start();
}

void Slices::StartHere() {
  isWanted_ = true;
  Slice();
}

void Slices::Stop() {
  isWanted_ = false;
  next_.stop();
}

// `isWaiting_` keeps a start during the waiting from waiting twice.
void Slices::Slice() {
  next_.stop();
  if (!waits || !IsDocumentBusy()) return Advance();
  if (std::exchange(isWaiting_, true)) return;
  WhenDocumentIsFree(&next_, [this] {
    isWaiting_ = false;
    if (isWanted_) next_.start();
  });
}

// The time is asked after each little piece. An exception, mostly for lack of memory, must not
// reach the event loop, which would end the program.
void Slices::Advance() {
  QElapsedTimer spent;
  spent.start();
  try {
    while (isWanted_ && advance_()) {
      if (spent.elapsed() < time.count()) continue;
      next_.start();
      return paused ? paused() : void();
    }
  } catch (...) {
    const std::string failure = FailureOf(work_);
    Stop();
    if (failed_) failed_();
    host::MessageDialog(host::String(failure));
  }
}

}  // namespace desktop
