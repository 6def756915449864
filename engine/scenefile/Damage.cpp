#include "engine/scenefile/Damage.h"

#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>

namespace engine {
namespace {

// Half a million elements in a file of next to nothing; from there on 1 KiB for each byte. The
// writer makes room where a scene is still shorter (SceneFile.cpp).
constexpr std::uint64_t kMemoryOfAnyFile = std::uint64_t{256} << 20;
constexpr std::uint64_t kMemoryPerByte = 1024;
constexpr const char* kMemoryVariable = "STAGEMARKS_OPEN_MEMORY";

// The rest is for the program and others.
std::uint64_t MostOfMachine() {
  const long pages = ::sysconf(_SC_PHYS_PAGES);
  const long bytes = ::sysconf(_SC_PAGESIZE);
  return pages > 0 && bytes > 0
             ? static_cast<std::uint64_t>(pages) / 4 * 3 * static_cast<std::uint64_t>(bytes)
             : std::uint64_t{4} << 30;
}

// In bytes; 0 where a person has said nothing, or no number.
std::uint64_t ChosenMemory() {
  const char* const text = std::getenv(kMemoryVariable);
  double gibibytes = 0;
  if (text == nullptr) return 0;
  std::from_chars(text, text + std::strlen(text), gibibytes);
  return gibibytes > 0 && gibibytes < 65536 ? static_cast<std::uint64_t>(gibibytes * (1 << 30)) : 0;
}

}  // namespace

// The first comparison keeps the product from wrapping around.
std::uint64_t MemoryFor(std::uint64_t fileBytes) {
  if (const std::uint64_t chosen = ChosenMemory()) return chosen;
  const std::uint64_t most = MostOfMachine();
  return fileBytes > most / kMemoryPerByte
             ? most
             : std::min(most, kMemoryOfAnyFile + fileBytes * kMemoryPerByte);
}

std::uint64_t RoomFor(std::uint64_t memory, std::uint64_t fileBytes) {
  const std::uint64_t allowed = kMemoryOfAnyFile + fileBytes * kMemoryPerByte;
  return memory > allowed ? (memory - allowed) / kMemoryPerByte + 1 : 0;
}

std::string Grouped(std::uint64_t number) {
  std::string digits = std::to_string(number);
  for (auto at = static_cast<std::ptrdiff_t>(digits.size()) - 3; at > 0; at -= 3)
    digits.insert(static_cast<std::size_t>(at), 1, ',');
  return digits;
}

void Budget::Charge(std::uint64_t count, std::uint64_t each) {
  // Divided, since the product of two numbers from a file may wrap around.
  if (each != 0 && count > left_ / each)
    throw Damage{"The file needs more memory than may be used for it (" + Grouped(limit_ >> 20) +
                 " MB). If you trust it, set " + kMemoryVariable + " to more, in GiB."};
  left_ -= count * each;
}

}  // namespace engine
