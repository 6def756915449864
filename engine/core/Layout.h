// Layout: the keys of a container's entries with their types, in order, and an index of them.
// Containers that are made alike share one and hold their values only: fifty values take 400 bytes
// instead of 1200, and what has the same layout is compared by its values alone. A layout may go on
// behind the entries of a body that shares it: appending the key that comes next there only counts
// up. Shared layouts are never changed, except that each thread keeps the last ones it made at hand
// and may go on with one that only this store and a single body of its own hold.
#pragma once

#include "engine/core/Entries.h"

namespace engine {

struct alignas(std::uint64_t) Layout {
  SharedCount owners;
  std::uint16_t size = 0;
  std::uint16_t capacity = 0;  // a power of two, from kIndexedEntries on
  std::uint16_t recent = 0;    // the place where the thread that made it keeps it at hand
  bool numbersOnly = true;     // no type of a value with shares; false says nothing

  std::uint64_t* Keys() { return static_cast<std::uint64_t*>(static_cast<void*>(this + 1)); }
  const std::uint64_t* Keys() const {
    return static_cast<const std::uint64_t*>(static_cast<const void*>(this + 1));
  }
  // Among the first `count` keys; kNoPosition where it is not.
  std::uint32_t Find(host::LONG key, std::uint32_t count) const {
    std::uint32_t at = next_;
    if (at >= count || KeyIn(Keys()[at]) != key) {
      at = FindIndexed(Keys(), capacity, key);
      if (at >= count) return kNoPosition;
    }
    next_ = at + 1;
    return at;
  }
  // Bytes of a layout with that room.
  static std::size_t Bytes(std::uint32_t capacity) {
    return sizeof(Layout) + capacity * sizeof(std::uint64_t) + IndexBytes(capacity);
  }
  static void End(Layout* layout);

 private:
  // The position behind the one that this thread found last, in whatever layout: values are mostly
  // read one after the other.
  [[gnu::tls_model("initial-exec")]] static thread_local constinit std::uint32_t next_;
};
static_assert(sizeof(Layout) % alignof(std::uint64_t) == 0);

// A layout that begins with these kFirstKeys keys and types: one made lately, or a new one.
inline constexpr std::uint32_t kFirstKeys = 8;
SharedReference<Layout> LayoutBeginningWith(const std::uint64_t* keys);

// These change the layout of which a body of one owner uses the first `count` keys, or put another
// one in its place, with the change made. Nothing has changed where memory fails.
void PutKeyBehind(SharedReference<Layout>& layout, std::uint32_t count, std::uint64_t key);
void PutKeyAt(SharedReference<Layout>& layout, std::uint32_t count, std::uint32_t at,
              std::uint64_t key);
void TakeKeyOut(SharedReference<Layout>& layout, std::uint32_t count, std::uint32_t at);

}  // namespace engine
