// Moving objects to another place of the tree, as one undo step. Main thread.
#pragma once

#include <vector>

#include "host/BaseDocument.h"

namespace engine {

// Puts `objects` in their order below `parent` (null: at the top level) after `pred` (null: as the first ones), each with all
// below it; where they stand in the world stays as it was. A `pred` that is itself moved or stands elsewhere counts as the
// nearest one before it that stays. The step is named "Move" unless a named group is open. False, with nothing changed, when
// `parent` is one of them or hangs below one, or one of them is not in `doc`. Linear in what is moved and in the depth of the
// tree.
bool MoveObjects(host::BaseDocument& doc, const std::vector<host::BaseObject*>& objects, host::BaseObject* parent,
                 host::BaseObject* pred);

}  // namespace engine
