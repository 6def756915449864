// Entry: one key of a container and its value, as bodies hold them in arrays. Whoever holds the
// array owns the value's share.
#pragma once

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

}  // namespace engine
