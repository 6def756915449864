#include "engine/undo/UndoHistory.h"

#include "engine/scene/DocumentListener.h"
#include "engine/scene/DocumentState.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/NodeTree.h"
#include "engine/scene/NodeTypes.h"

namespace engine {

using host::BaseDocument;
using host::BaseList2D;
using A = NodeAccess;

namespace {

// Marks that an exchange runs, in which nothing is registered, until its scope is left by whatever
// way.
class Running {
 public:
  explicit Running(bool& running) : running_(running) { running_ = true; }
  Running(const Running&) = delete;
  Running& operator=(const Running&) = delete;
  ~Running() { running_ = false; }

 private:
  bool& running_;
};

}  // namespace

void EntryList::Shrink(std::size_t size) {
  while (size_ > size) {
    --size_;
    (*this)[size_].~UndoEntry();
    if (size_ % kChunk == 0) chunks_.pop_back();
  }
}

UndoHistory& UndoHistory::Of(BaseDocument& doc) {
  std::unique_ptr<UndoAttachment>& undo = BodyOf(doc).undo;
  if (!undo) undo = std::make_unique<UndoHistory>(doc);
  return static_cast<UndoHistory&>(*undo);
}

const UndoHistory* UndoHistory::Of(const BaseDocument& doc) {
  return static_cast<const UndoHistory*>(BodyOf(doc).undo.get());
}

void UndoHistory::Start() {
  if (open_) return;
  open_ = std::make_unique<Step>();
  open_->remembered = Present();
}

void UndoHistory::End() {
  claims_.clear();
  if (!HoldsChange()) return open_.reset();
  undone_.clear();
  Name(actName);
  done_.push_back(std::move(open_));
  entries_ += done_.back()->Size();
  DropOldest();
}

void UndoHistory::DropOldest() {
  while (done_.size() > kMostSteps || (entries_ > kMostEntries && done_.size() > 1)) {
    entries_ -= done_.front()->Size();
    done_.pop_front();
  }
}

bool UndoHistory::Add(host::LONG type, BaseList2D& node) {
  if (!open_ || running_) return false;
  switch (type) {
    case host::UNDO_CHANGE:
      open_->entries.AddChange(node);
      return true;
    case host::UNDO_NEW:
      open_->entries.Add(UndoEntry::Made(node));
      return true;
    case host::UNDO_DELETE:
      claims_.insert(A::Id(node));
      return true;
    default:
      return false;
  }
}

void UndoHistory::Move(BaseList2D& node, BaseList2D& owner, host::GeListNode* pred) {
  if (open_ && !running_) open_->entries.Add(UndoEntry::Moved(node));
  TakeOut(node);
  PutIn(node, owner, A::Kind(owner) == NodeKind::Document ? SlotOf(node) : kChildren, pred);
}

bool UndoHistory::Claim(BaseList2D& node) {
  if (!open_ || running_) return false;
  const bool isFollowed = followsSettings_ && A::Kind(node) == NodeKind::RenderSettings;
  if (claims_.erase(A::Id(node)) == 0 && !isFollowed) return false;
  open_->entries.Add(UndoEntry::Parked(node));
  return true;
}

void UndoHistory::Made(BaseList2D& node) { Add(host::UNDO_NEW, node); }

void UndoHistory::SettingsInserted(BaseList2D& settings) {
  if (followsSettings_) Add(host::UNDO_NEW, settings);
}

BaseList2D* UndoHistory::ParkedNode(NodeId id) const {
  for (std::size_t i = open_ ? open_->entries.Size() : 0; i-- > 0;) {
    const UndoEntry& entry = std::as_const(open_->entries)[i];
    if (entry.Node() == id && entry.Parked()) return entry.Parked();
  }
  return nullptr;
}

void UndoHistory::AddStores(std::unique_ptr<KeptStores> kept, std::size_t weight) {
  if (!open_ || running_) return;
  open_->entries.Add(UndoEntry::Stores(doc_, std::move(kept)));
  open_->weight += weight;
}

UndoHistory::Remembered UndoHistory::Present() const {
  const host::BaseObject* active = doc_.GetActiveObject();
  return {SceneCameraIdOf(doc_), ActiveRenderDataIdOf(doc_), doc_.GetFps(),
          active ? A::Id(*active) : 0};
}

void UndoHistory::Return(const Remembered& to) {
  SetSceneCameraId(doc_, to.camera);
  doc_.SetActiveRenderData(AsRenderData(FindNode(&doc_, to.settings)));
  doc_.SetFps(to.fps);
  DocumentBody& body = BodyOf(doc_);
  if (to.activeObject == Present().activeObject) return;
  body.selectedObjects.Add(to.activeObject, body.table);
  ++body.selectionChanges;
}

void UndoHistory::Exchange(Step& step, bool backwards, std::size_t from) {
  const Running running(running_);
  const Remembered present = Present();
  const std::size_t count = step.entries.Size();
  const auto entry = [&](std::size_t i) -> UndoEntry& {
    return step.entries[backwards ? count - 1 - i : from + i];
  };
  std::size_t done = 0;
  try {
    for (; done < count - from; ++done) entry(done).Exchange(doc_);
    if (from == 0) Return(step.remembered);
  } catch (...) {
    // Out of memory, say. What is done is taken back, so that the step can be tried again.
    while (done > 0) entry(--done).Exchange(doc_);
    throw;
  }
  if (from == 0) step.remembered = present;
  doc_.SetChanged();
}

bool UndoHistory::Undo() {
  End();
  if (done_.empty()) return false;
  undone_.reserve(undone_.size() + 1);
  Exchange(*done_.back(), true, 0);
  undone_.push_back(std::move(done_.back()));
  done_.pop_back();
  entries_ -= undone_.back()->Size();
  return true;
}

bool UndoHistory::Redo() {
  End();
  if (undone_.empty()) return false;
  done_.emplace_back();
  try {
    Exchange(*undone_.back(), false, 0);
  } catch (...) {
    done_.pop_back();
    throw;
  }
  done_.back() = std::move(undone_.back());
  undone_.pop_back();
  entries_ += done_.back()->Size();
  return true;
}

void UndoHistory::Clear() {
  claims_.clear();
  open_.reset();
  undone_.clear();
  done_.clear();
  entries_ = 0;
}

bool UndoHistory::HoldsChange() const {
  if (!open_) return false;
  const Remembered present = Present();
  const Remembered& opening = open_->remembered;
  return open_->entries.Size() > 0 || opening.camera != present.camera ||
         opening.settings != present.settings || opening.fps != present.fps;
}

std::string UndoHistory::DoneName() const {
  if (HoldsChange()) return open_->name;
  return done_.empty() ? std::string() : done_.back()->name;
}

std::string UndoHistory::UndoneName() const {
  return CanRedo() ? undone_.back()->name : std::string();
}

std::vector<std::string> UndoHistory::DoneNames() const {
  std::vector<std::string> names;
  for (const auto& step : done_) names.push_back(step->name);
  if (HoldsChange()) names.push_back(open_->name);
  return names;
}

std::vector<std::string> UndoHistory::UndoneNames() const {
  std::vector<std::string> names;
  if (!CanRedo()) return names;
  for (auto step = undone_.rbegin(); step != undone_.rend(); ++step) names.push_back((*step)->name);
  return names;
}

void UndoHistory::Name(const std::string& name) {
  if (open_ && open_->name.empty()) open_->name = name;
}

std::size_t UndoHistory::EnterScope() {
  Start();
  ++scopes_;
  return open_->entries.Size();
}

void UndoHistory::LeaveScope() {
  if (--scopes_ == 0) End();
}

void UndoHistory::TakeBack(std::size_t from) {
  if (!open_) return;
  const Remembered atOpening = open_->remembered;
  Exchange(*open_, true, from);
  open_->remembered = atOpening;
  open_->entries.Shrink(from);
}

}  // namespace engine
