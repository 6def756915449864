#include "program/desktop/view/SceneFeed.h"

namespace desktop {

namespace {

constexpr std::size_t kObjectsAtOnce = 500;
// Read within the call: less than a slice takes.
constexpr std::size_t kMostNodesHere = 5000;

}  // namespace

SceneFeed::SceneFeed(engine::FileSystem& files, engine::RenderCaches& caches,
                     const engine::SceneReading& how,
                     std::function<void(engine::ScenePicture)> read)
    : files_(files),
      caches_(caches),
      how_(how),
      read_(std::move(read)),
      slices_(
          "reading the scene for a picture", [this] { return Advance(); }, [this] { GiveUp(); }) {}

void SceneFeed::Follow(const host::BaseDocument* doc) {
  if (IdentityOf(doc) == doc_ && (!doc || engine::ChangeCount(*doc) == count_)) return;
  doc_ = IdentityOf(doc);
  scan_.reset();
  if (doc) Start(*doc);
}

// Whoever changed the document knows that the picture does not depend on it.
void SceneFeed::TakeAsRead(const host::BaseDocument& doc, host::ULLONG since) {
  if (!scan_ && doc_ == IdentityOf(&doc) && count_ == since) count_ = engine::ChangeCount(doc);
}

void SceneFeed::Forget() {
  doc_ = 0;
  scan_.reset();
  slices_.Stop();
}

void SceneFeed::Start(const host::BaseDocument& doc) {
  count_ = engine::ChangeCount(doc);
  scan_.emplace(doc, files_, how_, caches_);
  // A large scene takes several turns of the event loop.
  engine::NodeCount(doc) > kMostNodesHere ? slices_.Start() : slices_.StartHere();
}

void SceneFeed::GiveUp() {
  scan_.reset();
  if (lost) lost();
}

// A change in the middle begins anew: half of an old scene and half of a new one fit together in
// nothing.
bool SceneFeed::Advance() {
  if (!scan_) return false;
  const host::BaseDocument* doc = FindOpenDocument(doc_);
  if (!doc) return GiveUp(), false;
  if (engine::ChangeCount(*doc) != count_) {
    count_ = engine::ChangeCount(*doc);
    scan_.emplace(*doc, files_, how_, caches_);
  }
  if (!scan_->Advance(kObjectsAtOnce)) return true;
  engine::ScenePicture scene = scan_->Take();
  scan_.reset();
  read_(std::move(scene));
  return false;
}

}  // namespace desktop
