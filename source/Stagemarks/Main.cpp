// The library's entry points.
#include "source/Stagemarks/SM.h"
#include "source/StagemarksNode/StagemarksNode.h"

namespace {

// Messages of the host at start-up.
constexpr host::LONG kInitialize = 0;
constexpr host::LONG kLoadResource = 1;

host::GeResource resource;

}  // namespace

host::Bool PluginStart() {
  return stagemarks::RegisterSM() && stagemarks::RegisterStagemarksNode();
}

host::Bool PluginMessage(host::LONG id, void*) {
  if (id == kInitialize) return host::TRUE;
  return id == kLoadResource && resource.Init();
}

void PluginEnd() {}
