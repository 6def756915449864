// Lacks the entry point PluginStart.
#include "host/Host.h"

host::Bool PluginMessage(host::LONG, void*) { return true; }
void PluginEnd() {}
