// HashIndex: finds the row that already holds some contents. It keeps row numbers and hashes only;
// the contents stay with its user, who compares them. One thread.
#pragma once

#include <cstdint>
#include <vector>

namespace engine {

class HashIndex {
 public:
  // The row with these contents: an earlier one for which `same(row)` is true, or `candidate`,
  // which is kept from then on.
  template <class Same>
  std::uint32_t FindOrAdd(std::uint64_t hash, std::uint32_t candidate, const Same& same) {
    if (used_ * 2 >= slots_.size()) Grow();
    const std::size_t at = Place(hash, same);
    if (slots_[at].mark != 0) return slots_[at].row;
    slots_[at] = {Mark(hash), candidate};
    ++used_;
    return candidate;
  }
  // The row with these contents, or null.
  template <class Same>
  const std::uint32_t* Find(std::uint64_t hash, const Same& same) const {
    if (slots_.empty()) return nullptr;
    const Slot& slot = slots_[Place(hash, same)];
    return slot.mark == 0 ? nullptr : &slot.row;
  }

 private:
  struct Slot {
    std::uint32_t mark = 0;  // 0: free
    std::uint32_t row = 0;
  };

  static std::uint32_t Mark(std::uint64_t hash) {
    return static_cast<std::uint32_t>(hash ^ (hash >> 32)) | 0x80000000u;
  }
  std::size_t Mask() const { return slots_.size() - 1; }
  // The slot of the row, or the free one where it would go.
  template <class Same>
  std::size_t Place(std::uint64_t hash, const Same& same) const {
    const std::uint32_t mark = Mark(hash);
    std::size_t at = mark & Mask();
    while (slots_[at].mark != 0 && !(slots_[at].mark == mark && same(slots_[at].row)))
      at = (at + 1) & Mask();
    return at;
  }
  void Grow() {
    std::vector<Slot> old(slots_.empty() ? 64 : slots_.size() * 2);
    old.swap(slots_);
    for (const Slot& slot : old) {
      if (slot.mark == 0) continue;
      std::size_t at = slot.mark & Mask();
      while (slots_[at].mark != 0) at = (at + 1) & Mask();
      slots_[at] = slot;
    }
  }

  std::vector<Slot> slots_;
  std::size_t used_ = 0;
};

}  // namespace engine
