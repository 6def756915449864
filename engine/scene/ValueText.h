// Values as text for dumps: exact, one line, the same on every machine. Main thread.
#pragma once

#include <functional>
#include <string>

#include "engine/scene/Nodes.h"

namespace engine {

// How a dump names the target of a link.
using LinkNames = std::function<std::string(NodeId)>;

// Text in double quotes, with control characters, quotes and backslashes escaped.
std::string Quoted(const host::String& text);
std::string RealText(host::Real value);
std::string VectorText(const host::Vector& value);
// One value; of a container only its own ID and its number of entries.
std::string ValueText(const host::GeData& value, const LinkNames& links);
// Appends one line per entry, those of sub-containers after the entry that holds them: "<prefix> 25003/0/80001 = 1". Any
// depth; below the thirty-second level the number of further levels stands for their keys: ".../+7/80001 = 1".
void AppendContainer(const host::BaseContainer& data, const std::string& prefix, const LinkNames& links, std::string& out);

}  // namespace engine
