// Registers a second command under the good plug-in's ID and does not look at the answer.
#include "host/Host.h"
#include "tests/plugins/Ids.h"

namespace {

class Second : public host::CommandData {
 public:
  ~Second() override { host::StatusSetText("second command destroyed"); }
};

}  // namespace

host::Bool PluginStart() {
  host::RegisterCommandPlugin(test_plugins::kSecondCommand, "Second", 0, nullptr, "", new Second);
  host::CommandData* third = new Second;
  if (!host::RegisterCommandPlugin(test_plugins::kGoodCommand, "Third", 0, nullptr, "", third))
    delete third;
  return true;
}

host::Bool PluginMessage(host::LONG, void*) { return true; }
void PluginEnd() { host::StatusSetText("ended without a start"); }
