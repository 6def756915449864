// Clock: the date and time that plug-ins write into scenes. Main thread.
#pragma once

#include "host/Files.h"

namespace engine {

class Clock {
 public:
  virtual ~Clock() = default;
  // In the zone that the system is set to.
  virtual host::LocalFileTime Now() = 0;
};

class SystemClock : public Clock {
 public:
  host::LocalFileTime Now() override;
};

}  // namespace engine
