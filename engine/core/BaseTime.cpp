#include <cmath>

#include "engine/core/Numbers.h"
#include "host/Math.h"

namespace host {

LONG BaseTime::GetFrame(Real rate) const {
  // At its own rate a frame is exact, without the way through seconds.
  const Real frame = denominator_ != 0 && denominator_ == rate ? numerator_ : Get() * rate;
  return engine::TruncatedLong(std::round(frame));
}

}  // namespace host
