// Addressing: finds things of a scene by what a person types: a name, a path from the top ("/Room/Lamp"), a pattern with
// * and ?, or "#12" for the object at position 12 (0-based) of the tree. Nothing is owned. Main thread.
#pragma once

#include <string>
#include <vector>

#include "engine/core/Result.h"
#include "host/Host.h"

namespace commandline {

// The path of an object: its names from the top, each after a slash.
std::string PathOf(const host::BaseObject& object);

// Every object that a pattern matches; without * or ? exactly one. A failure says what is missing or ambiguous.
engine::Result<std::vector<host::BaseObject*>> FindObjects(const host::BaseDocument& doc, const std::string& typed);
engine::Result<host::BaseObject*> FindObject(const host::BaseDocument& doc, const std::string& typed);
engine::Result<host::BaseMaterial*> FindMaterial(const host::BaseDocument& doc, const std::string& name);
engine::Result<host::LayerObject*> FindLayer(const host::BaseDocument& doc, const std::string& name);

}  // namespace commandline
