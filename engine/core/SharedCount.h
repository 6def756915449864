// SharedCount: how many own a block of text, numbers or entries. Copies of a value may live on
// different threads, so the count is atomic; a block is changed only by its single owner. Starts at
// one owner.
#pragma once

#include <atomic>
#include <cstdint>

namespace engine {

class SharedCount {
 public:
  void Retain() { owners_.fetch_add(1, std::memory_order_relaxed); }
  // True when this was the last owner: the caller destroys the block. A single owner pays no locked
  // instruction.
  [[nodiscard]] bool Release() {
    return Unique() || owners_.fetch_sub(1, std::memory_order_acq_rel) == 1;
  }
  bool Unique() const { return owners_.load(std::memory_order_acquire) == 1; }

 private:
  std::atomic<std::uint32_t> owners_{1};
};

}  // namespace engine
