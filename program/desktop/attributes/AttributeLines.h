// AttributeLines: which fields are shown for the elements that are looked at, in groups with
// titles. A group applies to all of the elements. Reads the document, owns no element. Main thread.
#pragma once

#include <QString>

#include "engine/editing/Field.h"
#include "engine/editing/InspectedElements.h"

namespace desktop {

struct AttributeLine {
  const engine::Field* field;
  QString label;
  engine::SharedIds elements;  // that the field is of

  // Whether both look alike, whatever their elements.
  bool LooksLike(const AttributeLine& other) const {
    return field == other.field && label == other.label;
  }
};

struct AttributeGroup {
  QString title;
  bool folded = false;  // at first
  std::vector<AttributeLine> lines;

  bool LooksLike(const AttributeGroup& other) const;
};

using ElementList = std::vector<host::BaseList2D*>;

// The groups for elements of `doc` with those identities; for none of them those of the document
// itself. At least one.
std::vector<AttributeGroup> GroupsFor(host::BaseDocument& doc, const ElementList& elements,
                                      const engine::SharedIds& ids);
// What is looked at in a few words: a name, "3 objects", "Nothing is selected"; and what it is:
// "Cube", "Null, Cube".
QString TitleOf(const ElementList& elements);
QString KindsOf(const ElementList& elements);

}  // namespace desktop
