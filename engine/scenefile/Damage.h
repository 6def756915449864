// Damage: what is wrong with bytes that are being read, as a sentence for a person. Thrown inside
// this folder only; Guarded, where a public function begins, turns it into a Status. Budget: how
// much memory a file may take when opened. Any thread.
#pragma once

#include <cstdint>
#include <exception>
#include <new>
#include <string>

#include "engine/core/Result.h"

namespace engine {

struct Damage {
  std::string message;
};

// Decimal digits in groups of three: 1204 gives "1,204".
std::string Grouped(std::uint64_t number);

// Bytes of memory that opening a file of so many bytes may take: more the larger it is, and never
// more than this machine has, so that a short file that unfolds without end is refused while the
// program that opens it lives on. STAGEMARKS_OPEN_MEMORY (GiB) allows another amount.
std::uint64_t MemoryFor(std::uint64_t fileBytes);
// Bytes to add to a file of `fileBytes` so that opening it may take `memory` bytes.
std::uint64_t RoomFor(std::uint64_t memory, std::uint64_t fileBytes);

class Budget {
 public:
  explicit Budget(std::uint64_t bytes) : limit_(bytes), left_(bytes) {}
  // Takes `count * each` bytes off before they are allocated; throws Damage where they are not
  // left.
  void Charge(std::uint64_t count, std::uint64_t each = 1);

 private:
  std::uint64_t limit_;
  std::uint64_t left_;
};

template <class T, class Work>
Result<T> Guarded(const Work& work) {
  try {
    return Result<T>(work());
  } catch (const Damage& damage) {
    return Result<T>::Failure(damage.message);
  } catch (const std::bad_alloc&) {
    return Result<T>::Failure(
        "There is not enough memory for this scene. Close other documents and try again.");
  } catch (const std::exception& error) {
    return Result<T>::Failure(std::string("The scene cannot be handled: ") + error.what() + ".");
  }
}

}  // namespace engine
