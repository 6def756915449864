// Throws where it should answer.
#include <stdexcept>

#include "host/Host.h"

host::Bool PluginStart() { throw std::runtime_error("no"); }
host::Bool PluginMessage(host::LONG, void*) { return true; }
void PluginEnd() {}
