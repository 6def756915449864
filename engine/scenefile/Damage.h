// Damage: what is wrong with bytes that are being read, as a sentence for a person. Thrown inside
// engine/scenefile only and turned into a Status where a public function begins. Budget: how much
// memory a file may take when opened. Any thread.
#pragma once

#include <cstdint>
#include <string>

namespace engine::scenefile {

struct Damage {
  std::string message;
};

// Decimal digits in groups of three: 1204 gives "1,204".
std::string Grouped(std::uint64_t number);

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

}  // namespace engine::scenefile
