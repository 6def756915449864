#include "engine/scenefile/Damage.h"

namespace engine {

std::string Grouped(std::uint64_t number) {
  std::string digits = std::to_string(number);
  for (auto at = static_cast<std::ptrdiff_t>(digits.size()) - 3; at > 0; at -= 3)
    digits.insert(static_cast<std::size_t>(at), 1, ',');
  return digits;
}

void Budget::Charge(std::uint64_t count, std::uint64_t each) {
  if (each != 0 && count > left_ / each)
    throw Damage{"The file needs more memory than may be used for it (" + Grouped(limit_ >> 20) +
                 " MB). Open it on a machine with more memory."};
  left_ -= count * each;
}

}  // namespace engine
