// Columns: the values of one field of many rows, stored as runs of alike ones; see "Columns" in
// docs/SCENE_FILE.md. The number of rows is not part of a column. Any thread.
#pragma once

#include <map>
#include <span>
#include <vector>

#include "engine/scenefile/Bytes.h"

namespace engine {

using ColumnValues = std::vector<std::uint64_t>;

// The longest run, and how many rows a column can have for each of its bytes (a run takes two bytes
// at least).
inline constexpr std::size_t kLongestRun = 129;
inline constexpr std::uint64_t kRowsPerByte = (kLongestRun + 1) / 2;

// Whole numbers of either sign, near their neighbors; identities and row numbers.
void PutInts(std::string& out, std::span<const std::uint64_t> values);
// Any 64 bits, equal to their neighbors or not at all: numbers with a fraction.
void PutWords(std::string& out, std::span<const std::uint64_t> values);
// 4-byte values, their first bytes together, then their second ones and so on: what zstd likes of
// coordinates.
void PutPlanes(std::string& out, std::span<const std::uint32_t> values);

// Read what the three above wrote; they refuse `rows` that the bytes left cannot hold and charge
// the column's memory.
ColumnValues TakeInts(Cursor& in, std::size_t rows);
ColumnValues TakeWords(Cursor& in, std::size_t rows);
std::vector<std::uint32_t> TakePlanes(Cursor& in, std::size_t rows);

// For callers that want little of a column, with the same checks: Skip passes over it; PickInts
// gives the values at the rows `wanted`, which rise and must lie in it; TallyInts gives how often
// each value occurs. O(bytes), or O(rows) where no two neighbors differ by the same.
void SkipInts(Cursor& in, std::size_t rows);
void SkipWords(Cursor& in, std::size_t rows);
ColumnValues PickInts(Cursor& in, std::size_t rows, std::span<const std::size_t> wanted);
std::map<std::uint64_t, std::size_t> TallyInts(Cursor& in, std::size_t rows);

// Every value must lie in [0, end).
void CheckBelow(const Cursor& in, std::span<const std::uint64_t> values, std::uint64_t end,
                const char* what);
// Every value must be a 32-bit number with sign.
void CheckLongs(const Cursor& in, std::span<const std::uint64_t> values, const char* what);

}  // namespace engine
