// Lacks the entry point PluginMessage.
#include "host/Host.h"

host::Bool PluginStart() { return true; }
void PluginEnd() {}
