#include "program/desktop/SlowEnd.h"

#include <QElapsedTimer>

#include "host/BaseObject.h"

namespace desktop {

namespace {

constexpr int kMillisecondsOfSlice = 15;

}  // namespace

SlowEnd::SlowEnd() {
  next_.setSingleShot(true);
  next_.setInterval(0);
  QObject::connect(&next_, &QTimer::timeout, &next_, [this] { Slice(); });
}

void SlowEnd::Take(OwnedDocument doc) {
  if (!doc) return;
  doc_ = std::move(doc);
  next_.start();
}

void SlowEnd::Slice() {
  QElapsedTimer time;
  time.start();
  while (host::BaseObject* object = doc_->GetFirstObject()) {
    host::BaseObject::Free(object);
    if (time.elapsed() >= kMillisecondsOfSlice) return next_.start();
  }
  doc_.reset();
}

}  // namespace desktop
