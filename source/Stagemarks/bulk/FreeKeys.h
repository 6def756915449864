// FreeKeys: hands out the lowest keys that a container has no entry under, in ascending order,
// without looking at any key twice. It does not own the container, which may only grow by the keys
// handed out meanwhile.
#pragma once

#include "source/Stagemarks/Host.h"

namespace stagemarks {

class FreeKeys {
 public:
  explicit FreeKeys(const BaseContainer& container) : container_(container) {}

  LONG Next() {
    while (container_.FindIndex(next_) != NOTOK) ++next_;
    return next_++;
  }

 private:
  const BaseContainer& container_;
  LONG next_ = 0;
};

}  // namespace stagemarks
