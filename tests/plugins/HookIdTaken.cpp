// Registers a hook under the ID of the good plug-in's command: there is one space of IDs.
#include "host/Host.h"
#include "tests/plugins/Ids.h"

namespace {

host::SceneHookData* Make() { return new host::SceneHookData; }

}  // namespace

host::Bool PluginStart() {
  return host::RegisterSceneHookPlugin(test_plugins::kGoodCommand, "Hook", 0, Make, 0, 0, nullptr);
}

host::Bool PluginMessage(host::LONG, void*) { return true; }
void PluginEnd() {}
