// Entries: the keys of a container and their values, as bodies hold them: side by side in one
// array, or the values alone beside keys that bodies share (Layout.h); an EntrySpan reads either.
// And the index behind an array of more than a few keys, two bytes for each entry there is room
// for: open addressing, in which a place holds a position counted from 1, or 0 where it is free.
// Whoever holds the array owns the values' shares; the index is part of the same block, under its
// laws.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

#include "engine/core/Value.h"

namespace engine {

struct Entry {
  host::LONG key;
  host::LONG type;
  std::uint64_t bits;

  Value Get() const { return {type, bits}; }
};
static_assert(sizeof(Entry) == 16);

// Key and type in one word. They are stored and compared as one: a wide read of two narrow stores
// that have just happened would wait for them.
inline std::uint64_t KeyAndType(host::LONG key, host::LONG type) {
  return std::uint64_t{static_cast<std::uint32_t>(key)} |
         std::uint64_t{static_cast<std::uint32_t>(type)} << 32;
}
inline std::uint64_t KeyAndType(const Entry& entry) {
  std::uint64_t word = 0;
  std::memcpy(&word, &entry, sizeof word);
  return word;
}
inline void FillEntry(Entry& entry, host::LONG key, Value value) {
  const std::uint64_t word = KeyAndType(key, value.type);
  std::memcpy(&entry, &word, sizeof word);
  entry.bits = value.bits;
}

inline Entry EntryOf(std::uint64_t keyAndType, std::uint64_t bits) {
  Entry entry;
  std::memcpy(&entry, &keyAndType, sizeof keyAndType);
  entry.bits = bits;
  return entry;
}
inline host::LONG KeyIn(std::uint64_t keyAndType) { return static_cast<host::LONG>(keyAndType); }
inline host::LONG TypeIn(std::uint64_t keyAndType) {
  return static_cast<host::LONG>(keyAndType >> 32);
}

// Entries that lie together, borrowed; each is given as a value.
class EntrySpan {
 public:
  EntrySpan() = default;
  EntrySpan(std::span<const Entry> entries)
      : EntrySpan(entries.data(), entries.empty() ? nullptr : &entries.front().bits, sizeof(Entry),
                  entries.size()) {}
  // Keys with their types as KeyAndType has them, and the values' bits.
  EntrySpan(const std::uint64_t* keys, const std::uint64_t* values, std::size_t size)
      : EntrySpan(keys, values, sizeof *values, size) {}

  bool empty() const { return size_ == 0; }
  std::size_t size() const { return size_; }
  // Where the values lie: the same for the same entries of the same body or chunk.
  const void* data() const { return values_; }
  Entry operator[](std::size_t i) const {
    return EntryOf(WordAt(keys_ + i * step_), WordAt(values_ + i * step_));
  }
  EntrySpan subspan(std::size_t from) const {
    return from == size_
               ? EntrySpan()
               : EntrySpan(keys_ + from * step_, values_ + from * step_, step_, size_ - from);
  }

  class Iterator {
   public:
    Iterator(const EntrySpan& span, std::size_t at) : span_(span), at_(at) {}
    Entry operator*() const { return span_[at_]; }
    Iterator& operator++() {
      ++at_;
      return *this;
    }
    bool operator!=(const Iterator& other) const { return at_ != other.at_; }

   private:
    const EntrySpan& span_;
    std::size_t at_;
  };
  Iterator begin() const { return {*this, 0}; }
  Iterator end() const { return {*this, size_}; }

 private:
  EntrySpan(const void* keys, const void* values, std::size_t step, std::size_t size)
      : keys_(static_cast<const char*>(keys)),
        values_(static_cast<const char*>(values)),
        step_(step),
        size_(size) {}
  static std::uint64_t WordAt(const char* at) {
    std::uint64_t word = 0;
    std::memcpy(&word, at, sizeof word);
    return word;
  }

  const char* keys_ = nullptr;
  const char* values_ = nullptr;
  std::size_t step_ = 0;
  std::size_t size_ = 0;
};

// Room, a power of two, from which on there is an index; and of most entries that it can find.
inline constexpr std::uint32_t kIndexedEntries = 16;
inline constexpr std::uint32_t kNoPosition = UINT32_MAX;

inline std::size_t IndexBytes(std::uint32_t capacity) {
  return capacity < kIndexedEntries ? 0 : 2 * std::size_t{capacity};
}

// Where the search for a key begins, by Fibonacci hashing: the upper bits of the product, as many
// as count the places.
inline std::uint32_t FirstPlace(std::uint32_t capacity, host::LONG key) {
  constexpr std::uint32_t kGoldenRatio = 0x9E3779B1;
  return (static_cast<std::uint32_t>(key) * kGoldenRatio) >> std::countl_zero(capacity);
}

// The position of the key in an array of that room, kNoPosition where it is not. `Item` is an
// Entry, or a key with its type.
inline host::LONG KeyOf(const Entry& entry) { return entry.key; }
inline host::LONG KeyOf(std::uint64_t keyAndType) { return KeyIn(keyAndType); }
template <class Item>
std::uint32_t FindIndexed(const Item* items, std::uint32_t capacity, host::LONG key) {
  const auto* places = static_cast<const std::uint8_t*>(static_cast<const void*>(items + capacity));
  const std::uint32_t mask = 2 * capacity - 1;
  for (std::uint32_t at = FirstPlace(capacity, key); places[at] != 0; at = (at + 1) & mask) {
    const std::uint32_t position = places[at] - 1u;
    if (KeyOf(items[position]) == key) return position;
  }
  return kNoPosition;
}

// Puts the item at that position in.
template <class Item>
void IndexItem(Item* items, std::uint32_t capacity, std::uint32_t position) {
  auto* places = static_cast<std::uint8_t*>(static_cast<void*>(items + capacity));
  const std::uint32_t mask = 2 * capacity - 1;
  std::uint32_t at = FirstPlace(capacity, KeyOf(items[position]));
  while (places[at] != 0) at = (at + 1) & mask;
  places[at] = static_cast<std::uint8_t>(position + 1);
}
// Empties the index, if there is one, and puts the first `size` items in.
template <class Item>
void IndexAgain(Item* items, std::uint32_t capacity, std::uint32_t size) {
  std::memset(items + capacity, 0, IndexBytes(capacity));
  for (std::uint32_t i = 0; i < size && capacity >= kIndexedEntries; ++i)
    IndexItem(items, capacity, i);
}

}  // namespace engine
