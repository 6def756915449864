// Lacks the entry point PluginEnd.
#include "host/Host.h"

host::Bool PluginStart() { return true; }
host::Bool PluginMessage(host::LONG, void*) { return true; }
