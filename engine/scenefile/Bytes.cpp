#include "engine/scenefile/Bytes.h"

#include <bit>

#include "engine/scenefile/Columns.h"

namespace engine {

// Shifted out lowest byte first, so that files are alike whatever the order of bytes of the
// machine.
void PutFixed32(std::string& out, std::uint32_t value) {
  for (unsigned shift = 0; shift < 32; shift += 8) out.push_back(static_cast<char>(value >> shift));
}

void PutFixed64(std::string& out, std::uint64_t value) {
  char bytes[8];
  for (unsigned i = 0; i < 8; ++i) bytes[i] = static_cast<char>(value >> (8 * i));
  out.append(bytes, sizeof bytes);
}

void PutVarint(std::string& out, std::uint64_t value) {
  while (value >= 0x80) {
    out.push_back(static_cast<char>(value | 0x80));
    value >>= 7;
  }
  out.push_back(static_cast<char>(value));
}

std::uint64_t Cursor::LongVarint(std::uint8_t first) {
  std::uint64_t value = first & 0x7Fu;
  for (unsigned shift = 7; shift < 64; shift += 7) {
    const std::uint8_t byte = Byte();
    // Of the tenth byte one bit is left.
    if (shift == 63 && byte > 1) break;
    value |= static_cast<std::uint64_t>(byte & 0x7F) << shift;
    if (byte < 0x80) return value;
  }
  Refuse("a number is longer than 64 bits");
}

// Eight bytes at a time: a varint ends with each byte below 0x80. No more than eight end in them,
// so that what goes on behind them is among those that are left.
void Cursor::SkipVarints(std::size_t count) {
  constexpr std::uint64_t kHighBits = 0x8080808080808080;
  while (count >= 8 && Left() >= 8) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes_.data() + at_, sizeof word);
    count -= static_cast<std::size_t>(std::popcount(~word & kHighBits));
    at_ += sizeof word;
  }
  for (; count > 0; --count) {
    while ((Byte() & 0x80U) != 0) {
    }
  }
}

std::uint64_t Cursor::Fixed64() {
  const std::string_view bytes = Take(8);
  std::uint64_t value = 0;
  for (unsigned i = 0; i < 8; ++i)
    value |= static_cast<std::uint64_t>(static_cast<std::uint8_t>(bytes[i])) << (8 * i);
  return value;
}

std::string_view Cursor::Take(std::uint64_t count) {
  if (count > Left()) RefuseEnd(count);
  const std::string_view taken = bytes_.substr(at_, static_cast<std::size_t>(count));
  at_ += taken.size();
  return taken;
}

std::uint64_t Cursor::Below(std::uint64_t end, const char* what) {
  const std::uint64_t value = Varint();
  if (value >= end) Refuse(std::string(what) + " is out of range");
  return value;
}

void Cursor::CheckRows(std::uint64_t rows) const {
  if (rows / kRowsPerByte > Left())
    Refuse("it names " + Grouped(rows) + " rows, more than its bytes can hold");
}

std::size_t Cursor::Rows(std::uint64_t each) {
  const std::uint64_t rows = Varint();
  CheckRows(rows);
  budget_->Charge(rows, each);
  return static_cast<std::size_t>(rows);
}

std::int32_t Cursor::Long(const char* what) {
  const auto value = static_cast<std::int64_t>(UnZigZag(Varint()));
  if (value != static_cast<std::int32_t>(value)) Refuse(std::string(what) + " is no 32-bit number");
  return static_cast<std::int32_t>(value);
}

void Cursor::End() const {
  if (Left() != 0) Refuse(Grouped(Left()) + " bytes are left over");
}

void Cursor::Refuse(const std::string& what) const {
  throw Damage{"The file is damaged in section " + section_ + " at byte " + Grouped(at_) +
               " of its contents: " + what + "."};
}

void Cursor::RefuseEnd(std::uint64_t wanted) const {
  Refuse(Grouped(wanted - Left()) + " bytes more are needed");
}

}  // namespace engine
