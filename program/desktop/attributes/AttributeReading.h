// AttributeReading: which fields are shown for the elements that are looked at, in groups with
// titles, and what the elements have in common in them. It reads in steps as large as one likes, so
// that a window stays alive while very many are read, and refers to the document, which must
// neither change nor go between its steps. Owns no element. Main thread.
#pragma once

#include <QString>
#include <optional>

#include "engine/editing/Field.h"
#include "engine/editing/FieldValue.h"
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
// Title of the elements in a few words: a name, "3 objects", "Nothing is selected"; and their
// kinds: "Cube", "Null, Cube".
QString TitleOf(const ElementList& elements);
QString KindsOf(const ElementList& elements);

class AttributeReading {
 public:
  // Reads the elements that live in `doc`; without any, the document's own fields.
  AttributeReading(host::BaseDocument& doc, engine::SharedIds elements);

  // Looks at about so many more elements; true when all is read.
  bool Advance(std::size_t elements);

  // After the last step. The values stand in the order of all lines; none where a line's elements
  // are gone.
  const ElementList& Elements() const { return living_; }
  std::vector<AttributeGroup> TakeGroups() { return std::move(groups_); }
  const std::vector<std::optional<engine::FieldValue>>& Values() const { return values_; }

 private:
  void FindMore(std::size_t elements);
  void BeginValues();
  void LookAtMore(std::size_t elements);
  void EndValues();

  host::BaseDocument& doc_;
  engine::SharedIds ids_;
  std::size_t found_ = 0;  // of the identities
  ElementList living_;
  std::vector<AttributeGroup> groups_;
  std::vector<engine::CommonValue> common_;      // of the lines that all elements share
  std::vector<engine::CommonValue*> undecided_;  // of these the ones in which elements still agree
  std::size_t lookedAt_ = 0;                     // of the living
  std::vector<std::optional<engine::FieldValue>> values_;
};

}  // namespace desktop
