// Values of fields: read from one element or from many at once, and set in many in one undo step. A
// value has the type that it is kept in, with three numbers as a vector and a choice among elements
// as a link. Main thread.
#pragma once

#include <array>
#include <vector>

#include "engine/editing/Field.h"
#include "engine/editing/InspectedElements.h"
#include "engine/editing/StepwiseEdit.h"

namespace engine {

// The common value of many elements in one field.
struct FieldValue {
  host::GeData value;  // of the first element
  // Whether the elements differ, for each of the parts of the value.
  std::array<bool, 3> mixed{};
};

// A change of a field: the new value, and which of its parts are set.
struct FieldEdit {
  host::GeData value;
  std::array<bool, 3> parts{true, true, true};
  // The next step of an edit that goes on (a turning wheel): takes the place of the step before.
  bool goesOn = false;
};

// A parameter that the element does not hold reads as what its type starts with.
host::GeData ReadField(const host::BaseList2D& element, const Field& field);
// Finds the common value of elements in one field, looking at one after the other. The elements
// must outlive it.
class CommonValue {
 public:
  CommonValue(const Field& field, const host::BaseList2D& first);

  // True as long as the elements looked at agree in anything: else no more need be looked at.
  bool LookAt(const host::BaseList2D& element);
  const FieldValue& Value() const { return common_; }

 private:
  const Field& field_;
  const host::BaseList2D& first_;
  bool (*alike_)(const host::BaseList2D& a, const host::BaseList2D& b) = nullptr;
  FieldValue common_;
  bool agree_ = true;
};
// Writes without undo. Texture fields: see SetTextureFile in MaterialCommands.h.
void WriteField(host::BaseList2D& element, const Field& field, const host::GeData& value);
// `before` with the meant parts replaced.
host::GeData Edited(const host::GeData& before, const FieldEdit& edit, FieldKind kind);

// The element of that identity that still lives in `doc`, itself included, or null; those of many
// in the order of the list.
host::BaseList2D* FindElement(host::BaseDocument& doc, engine::NodeId id);
std::vector<host::BaseList2D*> ElementsOf(host::BaseDocument& doc, const Ids& ids);

// Sets the field of these elements; those that have that value already are left alone. One undo
// step, which posts the change. The field outlives it.
StepwiseEdit SetField(host::BaseDocument& doc, std::vector<host::BaseList2D*> elements,
                      const Field& field, const FieldEdit& edit);

}  // namespace engine
