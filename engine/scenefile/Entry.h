// Entry: one entry of a container as the file knows it: key, type and a 64-bit word; see
// "Containers" in docs/SCENE_FILE.md. Blocks: what section VALUES is made of. Any thread.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "engine/scenefile/Columns.h"
#include "host/GeData.h"

namespace engine::scenefile {

struct Entry {
  std::int32_t key;
  std::int32_t type;
  std::uint64_t word;
  bool operator==(const Entry&) const = default;
};

// Containers with more entries are stored one by one, as lists or patches.
inline constexpr std::size_t kWidestRecord = 64;

enum class BlockKind : std::uint8_t { Records = 1, List = 2, Patch = 3 };

// All types of values, ascending.
inline constexpr host::LONG kValueTypes[] = {
    host::DA_NIL,    host::DA_LONG,     host::DA_REAL,      host::DA_TIME,     host::DA_VECTOR,
    host::DA_STRING, host::DA_FILENAME, host::DA_CONTAINER, host::DA_ALIASLINK};

// Numbers as columns hold them: sign extended.
inline std::uint64_t Extended(std::int32_t value) {
  return static_cast<std::uint64_t>(static_cast<std::int64_t>(value));
}

// Words of one type. Containers are stored by `numbers[word]`.
void PutTyped(std::string& out, host::LONG type, std::span<const std::uint64_t> words,
              std::span<const std::uint32_t> numbers);
// Types, then a column for each type that occurs.
void PutEntryValues(std::string& out, std::span<const Entry> entries,
                    std::span<const std::uint32_t> numbers);

}  // namespace engine::scenefile
