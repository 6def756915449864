// SeededIds: while it lives, new nodes get identities that follow from a seed instead of chance, so
// that the same work in another process gives the same ones. A range that is in use in this process
// is left out as ever: no identity is given twice. The innermost scope counts. Main thread.
#pragma once

#include <cstdint>
#include <random>

namespace engine {

class SeededIds {
 public:
  explicit SeededIds(std::uint64_t seed);
  SeededIds(const SeededIds&) = delete;
  SeededIds& operator=(const SeededIds&) = delete;
  ~SeededIds();

 private:
  std::mt19937_64 draw_;
  std::mt19937_64* former_;
};

}  // namespace engine
