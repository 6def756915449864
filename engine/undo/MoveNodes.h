// Moving objects, layers or render settings to another place of their tree, as one undo step. Main
// thread.
#pragma once

#include <vector>

#include "host/BaseDocument.h"

namespace engine {

// Puts `nodes`, all of one kind, in their order below `parent` (null: at the top level) after
// `pred` (null: as the first ones), each with all below it; where objects stand in the world stays
// as it was. A `pred` that is itself moved or stands elsewhere counts as the nearest one before it
// that stays. The step is named "Move" unless a named group is open; there is none when all of them
// are there already. False, with nothing changed, when `parent` is one of them or hangs below one,
// or one of them is not in `doc` or of another kind than the others. Linear in what is moved and in
// the depth of the tree.
bool MoveNodes(host::BaseDocument& doc, const std::vector<host::BaseList2D*>& nodes,
               host::BaseList2D* parent, host::BaseList2D* pred);

}  // namespace engine
