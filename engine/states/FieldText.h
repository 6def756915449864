// FieldText: elements and fields of recorded states as a person reads them: "Room/Table", "Render
// mode", "Off". Both programs say it so. Main thread.
#pragma once

#include <string>

#include "engine/states/Difference.h"

namespace engine {

// Names from the top, "Room/Table/Lamp"; of a tag "Wood on Room/Table"; of an element without a
// name the name of its type. "nothing" for one that is not in the document.
std::string ElementPath(const host::BaseDocument& doc, NodeId element);
// "Texture tag", "Cube", "Layer": the kind of an element in a few words; empty where it is gone.
std::string ElementKind(const host::BaseDocument& doc, NodeId element);

// The name of a field of an element of that type (C4DAtom::GetType), as the attributes call it, or
// "Value 1234" for one that has no name.
std::string FieldLabel(host::LONG type, host::LONG field);
// Its value as the attributes show it, units included; links by the target's name in quotes, "none"
// for none. Nothing reads "not there".
std::string FieldValueText(const host::BaseDocument& doc, host::LONG type, host::LONG field,
                           const std::optional<host::GeData>& value);
// The type by which the fields of a change are named; `doc` is that of its left side.
host::LONG TypeForFields(const host::BaseDocument& doc, const ElementChange& change);

}  // namespace engine
