#include "program/desktop/background/BackgroundJob.h"

#include <QThreadPool>
#include <limits>
#include <memory>
#include <utility>

#include "program/desktop/background/Failure.h"

namespace desktop {

namespace {

// A pool of their own without a limit: a job that renders for minutes keeps none from its turn.
QThreadPool& Threads() {
  static QThreadPool threads;
  threads.setMaxThreadCount(std::numeric_limits<int>::max());
  return threads;
}

}  // namespace

// Queued behind what was asked before; the toolkit drops it with the job that it is for.
void BackgroundJob::Control::OnMainThread(std::function<void()> act) const {
  QMetaObject::invokeMethod(&job_, std::move(act), Qt::QueuedConnection);
}

BackgroundJob::BackgroundJob(std::string name) : name_(std::move(name)) {
  connect(&watcher_, &QFutureWatcher<void>::finished, this, [this] { End(); });
}

// Disconnected first: nobody hears of an end that comes while the owner goes.
BackgroundJob::~BackgroundJob() {
  watcher_.disconnect(this);
  watcher_.cancel();
  watcher_.waitForFinished();
}

// The work is moved out before it runs, so that what it holds is freed on its own thread also when
// it throws. `problem_` is written there and read here only after the promise has finished, which
// orders both.
void BackgroundJob::Start(Work work, std::function<void(const std::string& problem)> ended) {
  problem_.clear();
  ended_ = std::move(ended);
  const auto promise = std::make_shared<QPromise<void>>();
  watcher_.setFuture(promise->future());
  promise->start();
  Threads().start([this, promise, work = std::move(work)]() mutable {
    try {
      std::exchange(work, {})(Control(*this, *promise));
    } catch (...) {
      problem_ = FailureOf(name_);
    }
    promise->finish();
  });
}

void BackgroundJob::Stop() { watcher_.cancel(); }

void BackgroundJob::Finish() {
  watcher_.waitForFinished();
  End();
}

// Called by the watcher or by Finish, whichever comes first; once.
void BackgroundJob::End() {
  if (const auto ended = std::exchange(ended_, nullptr)) ended(problem_);
}

}  // namespace desktop
