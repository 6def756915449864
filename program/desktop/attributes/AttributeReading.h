// AttributeReading: reads which fields the elements have that are looked at, and what they have in
// common in them, in steps as large as one likes, so that a window stays alive while very many are
// read. It refers to the document, which must neither change nor go between its steps. Main thread.
#pragma once

#include <optional>

#include "engine/editing/FieldValue.h"
#include "program/desktop/attributes/AttributeLines.h"

namespace desktop {

class AttributeReading {
 public:
  // Those of the elements that live in `doc`; without any the document's own fields.
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
