// PlainBulk: the bulk edits and deletions as they are described, step by step, with every search a
// walk over everything. It is what the plug-in's faster ways are compared with, in results by tests
// and in time by benches. It works on any document and on names instead of check marks. Main
// thread.
#pragma once

#include <string>
#include <vector>

#include "host/BaseDocument.h"

namespace tests::plain {

using Names = std::vector<host::String>;

// The ID of the element with that name, 0 when it is not found; only IDs below the number of
// elements are examined.
host::LONG StagemarkId(const host::BaseContainer& listStore, const host::String& name);

// The operations on the named elements; their results are those of the dialog's.
bool Update(host::BaseDocument& doc, const Names& names);
bool SetObjects(host::BaseDocument& doc, const Names& names);
bool SetTags(host::BaseDocument& doc, const Names& names);
bool SetLayers(host::BaseDocument& doc, const Names& names);
// Without preview files. The list is sorted anew after each deletion; the names in it at the end.
Names Delete(host::BaseDocument& doc, const Names& names);
// Names of the materials that cleaning deletes, in order.
Names UnusedMaterials(const host::BaseDocument& doc);

// The names of the list's rows, sorted by swaps of neighbors.
Names SortedNames(const host::BaseContainer& listStore);

}  // namespace tests::plain
