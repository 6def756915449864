// Where the pictures of the gallery come from, dearest last: memory, files of former runs, the
// small previews, the child. One slice does one thing. Which picture is old, and when an old one is
// rendered again without being asked, is decision 50.
#include "program/desktop/render/StatePictures.h"

#include <algorithm>

#include "engine/core/ContainerContents.h"
#include "engine/scene/DocumentState.h"
#include "program/desktop/background/DocumentBusy.h"
#include "program/desktop/render/RenderJob.h"

namespace desktop {

using engine::StoredState;
using host::LONG;

namespace {

constexpr std::uint64_t kLargestPreview = 8u << 20;
constexpr std::size_t kReadAtOnce = 500;  // elements
// Copying a larger scene is noticed: that is for a person to ask for.
constexpr std::size_t kManyElements = 200'000;
// Larger ones are rendered for a cell this much wider than a picture.
constexpr double kTooSmall = 1.3;
// Pictures; the others are on the disk.
constexpr std::size_t kMostInMemory = 150;

std::string FolderIn(const host::BaseDocument& doc) {
  return doc.GetDocumentPath().GetString().ToUtf8();
}

std::string PathIn(const host::BaseDocument& doc) {
  return FolderIn(doc).empty() ? ""
                               : FolderIn(doc) + "/" + doc.GetDocumentName().GetString().ToUtf8();
}

// The address of the shared contents first: it is nearly always the same.
bool AreSame(const host::BaseContainer& a, const host::BaseContainer& b) {
  return engine::BodyOf(a) == engine::BodyOf(b) || a == b;
}

}  // namespace

StatePictures::StatePictures(const engine::Services& services, std::function<void(LONG)> changed)
    : services_(services),
      files_(services),
      changed_(std::move(changed)),
      slices_("the pictures of the Stagemarks", [this] { return Advance(); }) {}

StatePictures::~StatePictures() {
  changed_ = [](LONG) {};
  Leave();
}

// Pictures of another document; their files stay.
void StatePictures::Forget() {
  EndRenderer();
  slices_.Stop();
  reading_.reset();
  entries_.clear();
  visible_.clear();
  ordered_.clear();
  stopped_ = false;
  fingerprint_ = 0;
}

void StatePictures::Follow(const host::BaseDocument* doc, const std::vector<StoredState>& states) {
  if (IdentityOf(doc) != doc_) Forget();
  const bool isOther = IdentityOf(doc) != doc_;
  doc_ = IdentityOf(doc);
  previews_ = doc ? engine::SideFolderOf(*doc) : "";
  const std::string path = doc ? PathIn(*doc) : "";
  TakeStates(states);
  if (path == path_ && !isOther) return;
  path_ = path;
  folder_ = doc ? files_.FolderOf(*doc) : "";
  // After Save As the pictures go along.
  for (auto& [id, entry] : entries_) entry.isKept = false;
}

// O(states). What is left in `former` was deleted, and its file goes.
void StatePictures::TakeStates(const std::vector<StoredState>& states) {
  std::unordered_map<LONG, Entry> former = std::exchange(entries_, {});
  for (const StoredState& state : states) {
    const auto it = former.find(state.id);
    // Another one that has got the same ID since.
    const bool isIt = it != former.end() &&
                      (it->second.state.name == state.name || it->second.state.date == state.date);
    if (isIt) {
      entries_[state.id] = std::move(it->second);
      former.erase(it);
    }
    Entry& entry = entries_[state.id];
    entry.state = state;
    Mark(entry);
  }
  for (const auto& [id, gone] : former) files_.Remove(folder_, id);
  if (!former.empty() && rendering_ != kNoState && !entries_.contains(rendering_)) EndRenderer();
}

// One file a slice, so that nobody waits for a disk.
bool StatePictures::KeepNext() {
  for (auto& [id, entry] : entries_) {
    if (entry.isKept || entry.shown.image.isNull() || entry.shown.isPreview) continue;
    Keep(entry);
    return true;
  }
  return false;
}

const StatePicture& StatePictures::Of(LONG id) const {
  static const auto* const none = new StatePicture;
  const auto it = entries_.find(id);
  return it == entries_.end() ? *none : it->second.shown;
}

void StatePictures::See(const std::vector<LONG>& visible, QSize box) {
  isSeen_ = true;
  visible_ = visible;
  box_ = box;
  DropUnseen();
  slices_.Start();
}

void StatePictures::Leave() {
  isSeen_ = false;
  slices_.Stop();
  reading_.reset();
  EndRenderer();
}

void StatePictures::RenderAgain(const std::vector<LONG>& ids) {
  stopped_ = false;
  ordered_.insert(ids.begin(), ids.end());
  for (const LONG id : ids) {
    if (const auto it = entries_.find(id); it != entries_.end()) it->second.hasFailed = false;
  }
  slices_.Start();
}

void StatePictures::Stop() {
  stopped_ = true;
  ordered_.clear();
  EndRenderer();
}

// Only with a folder: without one they would have to be rendered again.
void StatePictures::DropUnseen() {
  std::size_t held = 0;
  for (const auto& [id, entry] : entries_) held += !entry.shown.image.isNull();
  if (held <= kMostInMemory || folder_.empty()) return;
  const std::set<LONG> seen(visible_.begin(), visible_.end());
  for (auto& [id, entry] : entries_) {
    if (seen.contains(id) || id == rendering_) continue;
    const StoredState state = entry.state;
    entry = {};
    entry.state = state;
  }
}

// First what is on the disk, then what the scene looks like, then what is missing.
bool StatePictures::Advance() {
  const host::BaseDocument* doc = Document();
  if (!doc || !isSeen_) return false;
  for (const LONG id : visible_) {
    const auto it = entries_.find(id);
    if (it == entries_.end() || it->second.isRead) continue;
    ReadFiles(it->second);
    return true;
  }
  if (KeepNext() || ReadFingerprint(*doc)) return true;
  RenderNext();
  return false;
}

// Name and date both other: the file is of an earlier Stagemark with this ID. The date alone other:
// its record has changed, and the empty record that is compared says so.
void StatePictures::ReadFiles(Entry& entry) {
  entry.isRead = true;
  auto kept = files_.Read(folder_, entry.state.id);
  const std::string date = entry.state.date.Text();
  if (!kept || (kept->name != entry.state.name && kept->recorded != date))
    return ReadPreview(entry);
  entry.shown.image = std::move(kept->image);
  entry.isKept = true;
  entry.fingerprint = kept->fingerprint;
  entry.box = entry.shown.image.size();
  if (kept->recorded == date) entry.record = entry.state.record;
  Mark(entry);
  changed_(entry.state.id);
}

void StatePictures::ReadPreview(Entry& entry) {
  const std::string path = engine::PreviewFileIn(previews_, entry.state.name);
  if (path.empty() || services_.files.Kind(path) != engine::FileKind::File) return;
  const auto bytes = services_.files.ReadFile(path, kLargestPreview);
  if (!bytes) return;
  const auto image = engine::DecodeImage(bytes.Value());
  if (!image) return;
  entry.shown.image = ToQImage(engine::ToBytes(image.Value()));
  entry.shown.isPreview = true;
  changed_(entry.state.id);
}

// In slices; a change of the document begins it anew.
bool StatePictures::ReadFingerprint(const host::BaseDocument& doc) {
  const host::ULLONG count = engine::ChangeCount(doc);
  if (fingerprint_ != 0 && fingerprintCount_ == count) return false;
  if (!reading_ || readingCount_ != count) reading_.emplace(doc);
  readingCount_ = count;
  if (reading_->Advance(kReadAtOnce)) return true;
  fingerprint_ = reading_->Value();
  fingerprintCount_ = count;
  reading_.reset();
  MarkAll();
  return false;
}

// A failure is forgotten when the record has changed: it may work now.
void StatePictures::Mark(Entry& entry) const {
  const bool isOwn = !entry.shown.image.isNull() && !entry.shown.isPreview;
  entry.shown.olderThanState = isOwn && !AreSame(entry.record, entry.state.record);
  entry.shown.olderThanScene =
      isOwn && fingerprint_ != 0 && entry.fingerprint != 0 && entry.fingerprint != fingerprint_;
  if (entry.hasFailed && !AreSame(entry.failed, entry.state.record)) {
    entry.hasFailed = false;
    entry.shown.problem.clear();
  }
}

void StatePictures::MarkAll() {
  for (auto& [id, entry] : entries_) Mark(entry);
  changed_(kNoState);
}

// A larger picture is only made where the kept one was made for a clearly smaller cell; one of its
// own small size gets no better.
bool StatePictures::Needs(const Entry& entry) const {
  if (ordered_.contains(entry.state.id)) return true;
  if (entry.hasFailed || waitsForOrder_) return false;
  const StatePicture& shown = entry.shown;
  if (shown.image.isNull() || shown.isPreview || shown.olderThanState) return true;
  if (shown.olderThanScene && entry.tried != fingerprint_)
    return Document() && !Document()->GetChanged();
  const QSize needed = entry.shown.image.size().scaled(box_, Qt::KeepAspectRatio);
  return needed.width() > entry.shown.image.width() * kTooSmall &&
         box_.width() > entry.box.width() * kTooSmall;
}

// Visible ones in their order, then what a person has asked for. The child works on the scene as it
// was copied: it is replaced where a record, or what is seen besides, is another one by now.
void StatePictures::RenderNext() {
  const host::BaseDocument* doc = Document();
  if (!doc || stopped_ || !isSeen_ || rendering_ != kNoState || IsDocumentBusy()) return;
  waitsForOrder_ = engine::NodeCount(*doc) > kManyElements;
  std::vector<LONG> order = visible_;
  order.insert(order.end(), ordered_.begin(), ordered_.end());
  const auto next = std::find_if(order.begin(), order.end(), [this](LONG id) {
    const auto it = entries_.find(id);
    return it != entries_.end() && Needs(it->second);
  });
  if (next == order.end()) return EndRenderer();
  Entry& entry = entries_[*next];
  entry.tried = fingerprint_;
  const auto copied = copied_.find(*next);
  const bool isCurrent = copied != copied_.end() && AreSame(copied->second, entry.state.record);
  const bool isScene = !entry.shown.olderThanScene || renderer_ == nullptr ||
                       renderer_->Fingerprint() == fingerprint_;
  if (!renderer_ || !isCurrent || !isScene) StartRenderer(*doc);
  rendering_ = *next;
  progress_ = 0;
  renderer_->Render(entry.state.name, {static_cast<std::uint32_t>(box_.width()),
                                       static_cast<std::uint32_t>(box_.height())});
  changed_(rendering_);
}

void StatePictures::StartRenderer(const host::BaseDocument& doc) {
  EndRenderer();
  StateRenderer::News news;
  news.progress = [this](double done) {
    progress_ = done;
    changed_(rendering_);
  };
  news.rendered = [this](const engine::Image& picture) { Take(picture); };
  news.failed = [this](const std::string& problem) { TakeFailure(problem); };
  renderer_ = std::make_unique<StateRenderer>(doc, std::move(news));
  for (const auto& [id, entry] : entries_) copied_[id] = entry.state.record;
}

// It may be in the middle of telling something.
void StatePictures::EndRenderer() {
  const LONG rendered = std::exchange(rendering_, kNoState);
  copied_.clear();
  if (renderer_) {
    renderer_->Stop();
    renderer_.release()->deleteLater();
  }
  if (rendered != kNoState) changed_(rendered);
}

// The record that was rendered is the one of the copy, which may be older than the present one.
void StatePictures::Take(const engine::Image& picture) {
  const LONG id = std::exchange(rendering_, kNoState);
  ordered_.erase(id);
  Entry& entry = entries_[id];
  entry.shown = {};
  entry.shown.image = ToQImage(picture);
  entry.record = copied_[id];
  entry.fingerprint = renderer_->Fingerprint();
  entry.box = box_;
  entry.isRead = true;
  entry.hasFailed = false;
  entry.isKept = false;
  Mark(entry);
  ++made_;
  changed_(id);
  slices_.Start();
}

void StatePictures::Keep(Entry& entry) {
  entry.isKept = true;
  if (folder_.empty()) return;
  KeptPicture kept{entry.shown.image, entry.state.name, entry.state.date.Text(), entry.fingerprint};
  // Its own date is not known any more; no date is as old as that.
  if (entry.shown.olderThanState) kept.recorded.clear();
  const engine::Status status = files_.Keep(folder_, entry.state.id, kept);
  if (!status && !hasWarned_)
    services_.person.ShowStatus("The pictures of the gallery are not kept: " + status.Message());
  hasWarned_ = hasWarned_ || !status;
}

// With the record it failed at, so that it is not tried again and again.
void StatePictures::TakeFailure(const std::string& problem) {
  const LONG id = rendering_;
  ordered_.erase(id);
  if (const auto it = entries_.find(id); it != entries_.end()) {
    it->second.hasFailed = true;
    it->second.failed = it->second.state.record;
    it->second.shown.problem = problem;
  }
  EndRenderer();
  slices_.Start();
}

}  // namespace desktop
