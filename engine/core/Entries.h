// Entries: the keys of a container and their values, as bodies hold them in arrays, and the index
// that an array may have behind it, two bytes for each entry there is room for: open addressing, in
// which a place holds a position counted from 1, or 0 where it is free. Whoever holds the array
// owns the values' shares; the index is part of the same body, under its laws.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

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

// Room, a power of two, from which on there is an index; and of most entries that it can find.
inline constexpr std::uint32_t kIndexedEntries = 16;

inline std::size_t IndexBytes(std::uint32_t capacity) {
  return capacity < kIndexedEntries ? 0 : 2 * std::size_t{capacity};
}

inline const std::uint8_t* IndexOf(const Entry* entries, std::uint32_t capacity) {
  return static_cast<const std::uint8_t*>(static_cast<const void*>(entries + capacity));
}

// Where the search for a key begins, by Fibonacci hashing: the upper bits of the product, as many
// as count the places.
inline std::uint32_t FirstPlace(std::uint32_t capacity, host::LONG key) {
  constexpr std::uint32_t kGoldenRatio = 0x9E3779B1;
  return (static_cast<std::uint32_t>(key) * kGoldenRatio) >> std::countl_zero(capacity);
}

// Null where there is no such key.
inline const Entry* FindIndexed(const Entry* entries, std::uint32_t capacity, host::LONG key) {
  const std::uint8_t* places = IndexOf(entries, capacity);
  const std::uint32_t mask = 2 * capacity - 1;
  for (std::uint32_t at = FirstPlace(capacity, key); places[at] != 0; at = (at + 1) & mask) {
    const Entry* entry = entries + (places[at] - 1);
    if (entry->key == key) return entry;
  }
  return nullptr;
}

// Puts the entry at that position in.
void IndexEntry(Entry* entries, std::uint32_t capacity, std::uint32_t position);
// Empties the index, if there is one, and puts the first `size` entries in.
void IndexAgain(Entry* entries, std::uint32_t capacity, std::uint32_t size);

}  // namespace engine
