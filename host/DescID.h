// DescID: names a parameter by a path of levels. Only the first level is used by containers and
// elements here; deeper levels are kept and compared. A value.
#pragma once

#include <array>

#include "host/Types.h"

namespace host {

// One level: the parameter's number, and the type and creator where they are known (else 0).
struct DescLevel {
  LONG id = 0;
  LONG dtype = 0;
  LONG creator = 0;

  DescLevel() = default;
  DescLevel(LONG level_id) : id(level_id) {}
  DescLevel(LONG level_id, LONG datatype, LONG owner)
      : id(level_id), dtype(datatype), creator(owner) {}
  Bool operator==(const DescLevel& other) const = default;
};

class DescID {
 public:
  DescID() = default;
  DescID(LONG id) : levels_{DescLevel(id)}, depth_(1) {}
  DescID(const DescLevel& first) : levels_{first}, depth_(1) {}
  DescID(const DescLevel& first, const DescLevel& second) : levels_{first, second}, depth_(2) {}

  // 0 for the empty path, which names no parameter.
  LONG GetDepth() const { return depth_; }
  // Level `pos` (0-based); one with id 0 outside the path.
  DescLevel operator[](LONG pos) const {
    return pos >= 0 && pos < depth_ ? levels_[static_cast<std::size_t>(pos)] : DescLevel();
  }
  // Equal paths, level by level.
  Bool operator==(const DescID& other) const = default;

 private:
  std::array<DescLevel, 3> levels_{};
  LONG depth_ = 0;
};

}  // namespace host
