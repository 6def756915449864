// Pace: how far the reading or writing of a scene is, in elements, and whether it is to go on.
// Small scenes never ask: who would answer sees nothing of them anyway. One thread.
#pragma once

#include <algorithm>
#include <cstdint>

#include "engine/core/GoOn.h"
#include "engine/scenefile/Damage.h"

namespace engine::scenefile {

// What a stopped reading or writing says.
inline constexpr const char* kStopped = "The work was stopped; nothing was changed.";

class Pace {
 public:
  // Elements between two questions.
  static constexpr std::uint64_t kStride = 8192;

  explicit Pace(const GoOn& goOn) : goOn_(goOn) {}

  // From now on so many elements are gone through, which is the rest of the work from that share
  // on.
  void Expect(std::uint64_t elements, double from = 0) {
    whole_ = std::max<std::uint64_t>(1, elements);
    from_ = from;
    done_ = 0;
    next_ = kStride;
  }
  // Throw Damage when it is to stop.
  void Step(std::uint64_t elements = 1) {
    done_ += elements;
    if (done_ < next_) return;
    next_ = done_ + kStride;
    Ask(from_ +
        (1 - from_) * std::min(1.0, static_cast<double>(done_) / static_cast<double>(whole_)));
  }
  void Ask(double share) const {
    if (goOn_ && !goOn_(share)) throw Damage{kStopped};
  }

 private:
  const GoOn& goOn_;
  double from_ = 0;
  std::uint64_t whole_ = 1;
  std::uint64_t done_ = 0;
  std::uint64_t next_ = kStride;
};

}  // namespace engine::scenefile
