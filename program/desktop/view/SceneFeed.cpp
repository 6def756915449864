#include "program/desktop/view/SceneFeed.h"

#include <QElapsedTimer>

#include "engine/scene/Nodes.h"

namespace desktop {

namespace {

constexpr std::size_t kObjectsBetweenLooks = 500;
constexpr std::size_t kMostAtOnce = 5000;
constexpr int kMillisecondsOfSlice = 25;

}  // namespace

SceneFeed::SceneFeed(engine::RenderCaches& caches, const engine::SceneReading& how,
                     std::function<void(engine::ScenePicture)> read)
    : caches_(caches), how_(how), read_(std::move(read)) {
  next_.setSingleShot(true);
  QObject::connect(&next_, &QTimer::timeout, &next_, [this] { Slice(); });
}

void SceneFeed::Follow(const host::BaseDocument* doc) {
  if (IdentityOf(doc) == doc_ && (!doc || engine::ChangeCount(*doc) == count_)) return;
  doc_ = IdentityOf(doc);
  scan_.reset();
  if (doc) Start(*doc);
}

void SceneFeed::TakeAsRead(const host::BaseDocument& doc, host::ULLONG since) {
  if (!scan_ && doc_ == IdentityOf(&doc) && count_ == since) count_ = engine::ChangeCount(doc);
}

void SceneFeed::Forget() {
  doc_ = 0;
  scan_.reset();
  next_.stop();
}

void SceneFeed::Start(const host::BaseDocument& doc) {
  count_ = engine::ChangeCount(doc);
  scan_.emplace(doc, how_, caches_);
  // Of a large scene nothing is to be had at once, and others want their turn.
  engine::NodeCount(doc) > kMostAtOnce ? next_.start(0) : Slice();
}

void SceneFeed::Slice() {
  next_.stop();
  const host::BaseDocument* doc = FindOpenDocument(doc_);
  if (!scan_) return;
  if (!doc) {
    scan_.reset();
    if (lost) lost();
    return;
  }
  if (engine::ChangeCount(*doc) != count_) return Start(*doc);
  QElapsedTimer time;
  time.start();
  while (!scan_->Advance(kObjectsBetweenLooks)) {
    if (time.elapsed() < kMillisecondsOfSlice) continue;
    next_.start(0);
    return;
  }
  engine::ScenePicture scene = scan_->Take();
  scan_.reset();
  read_(std::move(scene));
}

}  // namespace desktop
