// Has no resource folder beside it and so refuses; must not be started.
#include "host/Host.h"

host::Bool PluginStart() {
  host::StatusSetText("started without resources");
  return true;
}

host::Bool PluginMessage(host::LONG, void*) {
  host::GeResource resource;
  return resource.Init();
}

void PluginEnd() { host::StatusSetText("ended without a start"); }
