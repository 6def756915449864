// How many IDs a search by name examines. It reads the store that it is given and keeps nothing.
// Any thread.
#pragma once

#include "source/Stagemarks/Host.h"

namespace stagemarks {

// Positions of the list store that are elements: all but the note that it was built.
LONG ElementPositions(const BaseContainer& listStore);

}  // namespace stagemarks
