// Background: one job at a time on a thread of its own. The owner waits in its destructor until the
// job has seen that it is to stop. Called from the main thread.
#pragma once

#include <QImage>
#include <QObject>
#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace desktop {

class Background : public QObject {
 public:
  // Makes a picture on the thread; asked now and then it stops early and returns a null picture.
  using Job = std::function<QImage(const std::atomic<bool>& stop)>;

  // `done`: called on the main thread with what the job has made; null, too, when memory was short.
  explicit Background(std::function<void(const QImage&)> done);
  ~Background() override;

  // Only while it is not busy.
  void Do(Job job);
  // Until `done` has been called.
  bool IsBusy() const { return busy_; }

 private:
  void Run();
  QImage Made(const Job& job);

  std::function<void(const QImage&)> done_;
  std::mutex mutex_;
  std::condition_variable news_;
  Job next_;
  std::atomic<bool> stop_{false};
  bool busy_ = false;  // main thread only
  std::thread thread_;
};

}  // namespace desktop
