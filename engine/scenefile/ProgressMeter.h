// ProgressMeter: counts the elements that the reading or writing of a scene has gone through,
// reports the share of them to a ProgressCallback, and ends the work by an exception when that says
// no. Scenes of less than one stride never ask: nobody would see the answer. One thread.
#pragma once

#include <algorithm>
#include <cstdint>

#include "engine/core/Progress.h"
#include "engine/scenefile/Damage.h"

namespace engine {

// The message of a reading or writing that was stopped.
inline constexpr const char* kStopped = "The work was stopped; nothing was changed.";

class ProgressMeter {
 public:
  // Elements between two questions.
  static constexpr std::uint64_t kStride = 8192;

  explicit ProgressMeter(const ProgressCallback& progress) : progress_(progress) {}

  // The rest of the work, from the share `from` on, goes through so many elements.
  void Expect(std::uint64_t elements, double from = 0) {
    whole_ = std::max<std::uint64_t>(1, elements);
    from_ = from;
    done_ = 0;
    next_ = kStride;
  }
  // So many elements more are done. Step and Ask throw Damage when the work is to stop.
  void Step(std::uint64_t elements = 1) {
    done_ += elements;
    if (done_ < next_) return;
    next_ = done_ + kStride;
    Ask(from_ +
        (1 - from_) * std::min(1.0, static_cast<double>(done_) / static_cast<double>(whole_)));
  }
  // Reports a share of the whole, 0..1, at once.
  void Ask(double share) const {
    if (progress_ && !progress_(share)) throw Damage{kStopped};
  }

 private:
  const ProgressCallback& progress_;
  double from_ = 0;
  std::uint64_t whole_ = 1;
  std::uint64_t done_ = 0;
  std::uint64_t next_ = kStride;
};

}  // namespace engine
