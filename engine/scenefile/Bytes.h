// Bytes: numbers to bytes and back, as docs/SCENE_FILE.md describes them. A Cursor reads the
// contents of one section; it never reads past the end and throws Damage, naming section and place,
// for what it cannot accept. Any thread.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "engine/scenefile/Damage.h"

namespace engine {

void PutFixed32(std::string& out, std::uint32_t value);
void PutFixed64(std::string& out, std::uint64_t value);
void PutVarint(std::string& out, std::uint64_t value);

// Small numbers of either sign become small numbers without one, and back.
constexpr std::uint64_t ZigZag(std::uint64_t value) { return (value << 1) ^ (0 - (value >> 63)); }
constexpr std::uint64_t UnZigZag(std::uint64_t value) { return (value >> 1) ^ (0 - (value & 1)); }

class Cursor {
 public:
  // `bytes` and `budget` must outlive the cursor.
  Cursor(std::string_view bytes, std::string section, Budget& budget)
      : bytes_(bytes), section_(std::move(section)), budget_(&budget) {}

  std::size_t Left() const { return bytes_.size() - at_; }
  Budget& Memory() { return *budget_; }

  std::uint8_t Byte() {
    if (at_ == bytes_.size()) RefuseEnd(1);
    return static_cast<std::uint8_t>(bytes_[at_++]);
  }
  std::uint64_t Varint() {
    const std::uint8_t first = Byte();
    return first < 0x80 ? first : LongVarint(first);
  }
  // Goes past so many varints without making numbers of them; they may be longer than allowed.
  void SkipVarints(std::size_t count);
  std::uint64_t Fixed64();
  std::string_view Take(std::uint64_t count);
  // A varint that must lie below `end`; `what` names it in the refusal.
  std::uint64_t Below(std::uint64_t end, const char* what);
  // Number of rows that follow in columns; refuses one that the bytes left cannot hold, and charges
  // `each` bytes a row.
  std::size_t Rows(std::uint64_t each);
  void CheckRows(std::uint64_t rows) const;
  // A number that must fit 32 bits.
  std::int32_t Long(const char* what);
  // Refuses bytes that are left over.
  void End() const;
  [[noreturn]] void Refuse(const std::string& what) const;

 private:
  std::uint64_t LongVarint(std::uint8_t first);
  [[noreturn]] void RefuseEnd(std::uint64_t wanted) const;

  std::string_view bytes_;
  std::size_t at_ = 0;
  std::string section_;
  Budget* budget_;
};

}  // namespace engine
