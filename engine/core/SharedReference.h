// SharedCount: how many own a block of text, numbers or entries; SharedReference: one of its
// owners. Copies of a value may live on different threads, so the count is atomic; a block is
// changed only by its single owner.
#pragma once

#include <atomic>
#include <cstdint>
#include <utility>

namespace engine {

// Starts at one owner.
class SharedCount {
 public:
  void Retain() { owners_.fetch_add(1, std::memory_order_relaxed); }
  // True when this was the last owner: the caller destroys the block. A single owner pays no locked
  // instruction.
  [[nodiscard]] bool Release() {
    return Unique() || owners_.fetch_sub(1, std::memory_order_acq_rel) == 1;
  }
  bool Unique() const { return Count() == 1; }
  // Of use only to one who knows who the owners are.
  std::uint32_t Count() const { return owners_.load(std::memory_order_acquire); }

 private:
  std::atomic<std::uint32_t> owners_{1};
};

// Owns one share of a block, or nothing. `T` has a SharedCount `owners` and a static `End(T*)`,
// which destroys a block that has no owner left. Copying takes a share more.
template <class T>
class SharedReference {
 public:
  SharedReference() = default;
  // Takes over a share that the caller has, as a new block's.
  explicit SharedReference(T* block) : block_(block) {}
  SharedReference(const SharedReference& other) : block_(other.block_) {
    if (block_) block_->owners.Retain();
  }
  SharedReference(SharedReference&& other) noexcept
      : block_(std::exchange(other.block_, nullptr)) {}
  SharedReference& operator=(SharedReference other) noexcept {
    std::swap(block_, other.block_);
    return *this;
  }
  ~SharedReference() {
    if (block_ && block_->owners.Release()) T::End(block_);
  }

  T* get() const { return block_; }
  T& operator*() const { return *block_; }
  T* operator->() const { return block_; }
  explicit operator bool() const { return block_ != nullptr; }
  // Hands the share to the caller.
  [[nodiscard]] T* release() { return std::exchange(block_, nullptr); }

 private:
  T* block_ = nullptr;
};

}  // namespace engine
