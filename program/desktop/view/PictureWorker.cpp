#include "program/desktop/view/PictureWorker.h"

namespace desktop {

namespace {

QImage ToQImage(const engine::Image& image) {
  const QImage view(image.bytes.data(), static_cast<int>(image.width), static_cast<int>(image.height),
                    static_cast<qsizetype>(image.width) * 4, QImage::Format_RGBX8888);
  return view.convertToFormat(QImage::Format_RGB32);
}

}  // namespace

PictureWorker::PictureWorker(std::function<void(const QImage&, bool)> passed)
    : passed_(std::move(passed)), thread_([this] { Run(); }) {}

PictureWorker::~PictureWorker() {
  Stop();
  {
    const std::lock_guard lock(mutex_);
    ends_ = true;
  }
  news_.notify_one();
  thread_.join();
}

void PictureWorker::Work(std::unique_ptr<engine::PictureInProgress> picture) {
  {
    const std::lock_guard lock(mutex_);
    ++number_;
    next_ = std::move(picture);
  }
  busy_ = true;
  news_.notify_one();
}

void PictureWorker::Stop() {
  const std::lock_guard lock(mutex_);
  ++number_;
  next_.reset();
  busy_ = false;
}

void PictureWorker::Run() {
  std::unique_lock lock(mutex_);
  for (;;) {
    news_.wait(lock, [this] { return ends_ || next_; });
    if (ends_) return;
    const auto picture = std::move(next_);
    const std::uint64_t number = number_;
    lock.unlock();
    Refine(*picture, number);
    lock.lock();
  }
}

void PictureWorker::Refine(engine::PictureInProgress& picture, std::uint64_t number) {
  while (!picture.IsFinished()) {
    if (!picture.Refine([&](double) { return number_ == number; })) return;
    const QImage image = ToQImage(picture.Current());
    QMetaObject::invokeMethod(
        this, [this, image, finished = picture.IsFinished(), number] { Deliver(image, finished, number); }, Qt::QueuedConnection);
  }
}

void PictureWorker::Deliver(const QImage& image, bool finished, std::uint64_t number) {
  if (number != number_) return;
  if (finished) busy_ = false;
  passed_(image, finished);
}

}  // namespace desktop
