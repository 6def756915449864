#include "engine/core/Entries.h"

#include <algorithm>

namespace engine {

namespace {

std::uint8_t* Places(Entry* entries, std::uint32_t capacity) {
  return static_cast<std::uint8_t*>(static_cast<void*>(entries + capacity));
}

}  // namespace

void IndexEntry(Entry* entries, std::uint32_t capacity, std::uint32_t position) {
  std::uint8_t* places = Places(entries, capacity);
  const std::uint32_t mask = 2 * capacity - 1;
  std::uint32_t at = FirstPlace(capacity, entries[position].key);
  while (places[at] != 0) at = (at + 1) & mask;
  places[at] = static_cast<std::uint8_t>(position + 1);
}

void IndexAgain(Entry* entries, std::uint32_t capacity, std::uint32_t size) {
  if (capacity < kIndexedEntries) return;
  std::fill_n(Places(entries, capacity), IndexBytes(capacity), std::uint8_t{0});
  for (std::uint32_t i = 0; i < size; ++i) IndexEntry(entries, capacity, i);
}

}  // namespace engine
