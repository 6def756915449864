#include "program/desktop/panels/Background.h"

#include <new>

namespace desktop {

Background::Background(std::function<void(const QImage&)> done)
    : done_(std::move(done)), thread_([this] { Run(); }) {}

Background::~Background() {
  {
    const std::lock_guard lock(mutex_);
    stop_ = true;
  }
  news_.notify_one();
  thread_.join();
}

void Background::Do(Job job) {
  busy_ = true;
  {
    const std::lock_guard lock(mutex_);
    next_ = std::move(job);
  }
  news_.notify_one();
}

QImage Background::Made(const Job& job) {
  try {
    return job(stop_);
  } catch (const std::bad_alloc&) {
    return {};
  }
}

void Background::Run() {
  std::unique_lock lock(mutex_);
  for (;;) {
    news_.wait(lock, [this] { return stop_ || next_; });
    if (stop_) return;
    const Job job = std::exchange(next_, {});
    lock.unlock();
    const auto tell = [this, made = Made(job)] {
      busy_ = false;
      done_(made);
    };
    QMetaObject::invokeMethod(this, tell, Qt::QueuedConnection);
    lock.lock();
  }
}

}  // namespace desktop
