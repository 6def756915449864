// EntryList: the entries of one undo step in chunks: adding never moves one, and memory is touched
// only when used. Main thread.
#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <vector>

#include "engine/undo/UndoEntry.h"

namespace engine {

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

}  // namespace engine
