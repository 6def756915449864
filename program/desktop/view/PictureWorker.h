// PictureWorker: refines one picture after the other on a thread of its own and hands each pass to the main thread. It owns the
// picture it works on; a new one takes the place of the old. Called from the main thread.
#pragma once

#include <QImage>
#include <QObject>
#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

#include "engine/render/Renderer.h"

namespace desktop {

class PictureWorker : public QObject {
 public:
  // `passed`: called on the main thread with the picture after each pass and whether that was the last one. Never with a pass of
  // a picture that was replaced.
  explicit PictureWorker(std::function<void(const QImage&, bool)> passed);
  ~PictureWorker() override;

  // Gives up what is being worked on and begins with this one.
  void Work(std::unique_ptr<engine::PictureInProgress> picture);
  // Gives up what is being worked on.
  void Stop();
  bool IsBusy() const { return busy_; }

 private:
  void Run();
  void Refine(engine::PictureInProgress& picture, std::uint64_t number);
  void Deliver(const QImage& image, bool finished, std::uint64_t number);

  std::function<void(const QImage&, bool)> passed_;
  std::mutex mutex_;
  std::condition_variable news_;
  std::unique_ptr<engine::PictureInProgress> next_;
  bool ends_ = false;
  std::atomic<std::uint64_t> number_{0};  // of the picture that is wanted
  bool busy_ = false;                     // main thread only
  std::thread thread_;
};

}  // namespace desktop
