// DemoStates: the three states that the demo makes of a scene. Prepare adds what they switch
// between, cameras, a layer and a material, before the first is recorded; the states only change
// switches, so that each can be brought back. All changes are registered for undo. Main thread.
#pragma once

#include "host/Host.h"

namespace commandline {

struct DemoState {
  const char* name;
  const char* what;  // for a person
  void (*make)(host::BaseDocument& doc);
};

inline constexpr std::size_t kDemoStates = 3;
const DemoState& GetDemoState(std::size_t index);

void PrepareDemo(host::BaseDocument& doc);

}  // namespace commandline
