// UndoHistory: the undo steps of one document. A step is a list of entries; undo runs it backwards,
// redo forwards, both exchanging what is kept with what is live. Steps own the nodes that are
// parked in them. Main thread.
#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "engine/core/Progress.h"
#include "engine/scene/DocumentBody.h"
#include "engine/scene/DocumentListener.h"
#include "engine/undo/StepDifference.h"
#include "engine/undo/UndoEntry.h"

namespace engine {

// The entries of one undo step in chunks: adding never moves one, and memory is touched only when
// used.
class EntryList {
 public:
  EntryList() = default;
  EntryList(const EntryList&) = delete;
  EntryList& operator=(const EntryList&) = delete;
  ~EntryList() { Shrink(0); }

  std::size_t Size() const { return size_; }
  UndoEntry& operator[](std::size_t index) { return chunks_[index / kChunk]->At(index % kChunk); }
  const UndoEntry& operator[](std::size_t index) const {
    return chunks_[index / kChunk]->At(index % kChunk);
  }
  void Add(UndoEntry&& entry) {
    ::new (NextPlace()) UndoEntry(std::move(entry));
    ++size_;
  }
  // The entry is built where it stays.
  void AddChange(host::BaseList2D& node) {
    ::new (NextPlace()) UndoEntry(node);
    ++size_;
  }
  // Ends the entries from `size` on, the last one first.
  void Shrink(std::size_t size);

 private:
  static constexpr std::size_t kChunk = 512;
  struct Chunk {
    void* Raw(std::size_t index) { return bytes + index * sizeof(UndoEntry); }
    UndoEntry& At(std::size_t index) { return *std::launder(static_cast<UndoEntry*>(Raw(index))); }
    alignas(UndoEntry) std::byte bytes[kChunk * sizeof(UndoEntry)];
  };

  void* NextPlace() {
    if (size_ == chunks_.size() * kChunk) chunks_.emplace_back(new Chunk);
    return chunks_.back()->Raw(size_ % kChunk);
  }

  std::vector<std::unique_ptr<Chunk>> chunks_;
  std::size_t size_ = 0;
};

class UndoHistory : public UndoAttachment {
 public:
  // Steps kept, and entries kept in all of them together (the newest step is kept whatever its
  // size).
  static constexpr std::size_t kMostSteps = 100;
  static constexpr std::size_t kMostEntries = 4'000'000;

  // Name of the act of a person that is going on, for groups that end without a name; empty where
  // none is known. Set by ActName.
  inline static std::string actName;

  explicit UndoHistory(host::BaseDocument& doc) : doc_(doc) {}

  // The document's history, made when it is first asked for; null from the const one before that.
  static UndoHistory& Of(host::BaseDocument& doc);
  static const UndoHistory* Of(const host::BaseDocument& doc);

  bool IsOpen() const { return open_ != nullptr; }
  void Start();
  // Makes the open group a step, unless nothing was registered and neither scene camera, active
  // settings nor frame rate changed.
  void End();
  // End for callers that may be inside a scope: then the group is left to the scope.
  void EndUnlessScoped() {
    if (scopes_ == 0) End();
  }
  bool Add(host::LONG type, host::BaseList2D& node);
  // Puts an object, a layer or render settings below `owner` (one of its kind or the document)
  // after `pred`, registered when a group is open. The caller has made sure that `owner` does not
  // hang below it and `pred` stands there.
  void Move(host::BaseList2D& node, host::BaseList2D& owner, host::GeListNode* pred);
  // Both close an open group first.
  bool Undo();
  bool Redo();
  void ForgetUndone() { undone_.clear(); }
  void Clear();

  bool CanUndo() const { return !done_.empty() || HoldsChange(); }
  bool CanRedo() const { return !undone_.empty() && !HoldsChange(); }
  std::string DoneName() const;
  std::string UndoneName() const;
  // Names of all steps: of those done, the oldest first; of those undone, the one that Redo takes
  // first.
  std::vector<std::string> DoneNames() const;
  std::vector<std::string> UndoneNames() const;
  void Name(const std::string& name);

  // Scopes: entering one opens the group and answers how many entries it has; the outermost one
  // closes it.
  std::size_t EnterScope();
  void LeaveScope();
  // Takes back the open group's entries from there on.
  void TakeBack(std::size_t from);
  // Compares the states that the open group's entries from there on keep with the live ones; camera
  // and active settings compare with the group's beginning. Lines of the first `most` elements that
  // differ. Nothing when it was stopped.
  std::optional<StepDifference> Difference(std::size_t from, std::size_t most,
                                           const ProgressCallback& progress) const;

  // While it is on, render settings that are freed are parked in the open group as if that had been
  // registered, and those inserted are registered. Answers whether it was on.
  bool FollowSettings(bool on) { return std::exchange(followsSettings_, on); }
  // The element of that identity that the open group keeps; null where it keeps none.
  host::BaseList2D* ParkedNode(NodeId id) const;
  // Adds to the open group; `weight` counts as so many entries.
  void AddStores(std::unique_ptr<KeptStores> kept, std::size_t weight);
  // Makes no step of the open group, whatever was registered.
  void Abandon() { open_->entries.Shrink(0); }

  bool Claim(host::BaseList2D& node) override;
  void Made(host::BaseList2D& node) override;
  void SettingsInserted(host::BaseList2D& settings) override;

 private:
  // Facts of its document that a group remembers when it opens and gives back on undo.
  struct Remembered {
    NodeId camera = 0;
    NodeId settings = 0;
    host::LONG fps = 0;
    NodeId activeObject = 0;  // which selected one was the last; no change by itself
  };
  struct Step {
    EntryList entries;
    std::string name;
    Remembered remembered;
    std::size_t weight = 0;  // entries that others count as

    std::size_t Size() const { return entries.Size() + weight; }
  };

  Remembered Present() const;
  void Return(const Remembered& to);
  void Exchange(Step& step, bool backwards, std::size_t from);
  bool HoldsChange() const;
  void DropOldest();
  // Positions of the entries from there on, the first of each element, in order.
  std::vector<std::size_t> FirstEntries(std::size_t from) const;

  host::BaseDocument& doc_;
  std::unique_ptr<Step> open_;
  std::deque<std::unique_ptr<Step>> done_;
  std::vector<std::unique_ptr<Step>> undone_;
  // Registered for deletion in the open group and not yet freed
  std::unordered_set<NodeId> claims_;
  bool followsSettings_ = false;
  std::size_t entries_ = 0;  // in done_
  int scopes_ = 0;
  bool running_ = false;
};

}  // namespace engine
