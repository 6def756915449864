// Registers a command and a hook and refuses to start then: both must be gone before its library is
// closed.
#include "host/Host.h"
#include "tests/plugins/Ids.h"

namespace {

class Refused : public host::CommandData {
 public:
  ~Refused() override { host::StatusSetText("refused command destroyed"); }
};

class RefusedHook : public host::SceneHookData {
 public:
  static host::SceneHookData* Alloc() {
    host::StatusSetText("refused hook made");
    return new RefusedHook;
  }
};

}  // namespace

host::Bool PluginStart() {
  host::RegisterCommandPlugin(test_plugins::kRefusedCommand, "Refused", 0, nullptr, "",
                              new Refused);
  host::RegisterSceneHookPlugin(test_plugins::kRefusedHook, "Refused", 0, RefusedHook::Alloc, 0, 0,
                                nullptr);
  return false;
}

host::Bool PluginMessage(host::LONG, void*) { return true; }
void PluginEnd() { host::StatusSetText("ended without a start"); }
