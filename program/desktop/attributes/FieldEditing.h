// FieldEditing: edits one field of many elements in one undo step. Main thread.
#pragma once

#include "program/desktop/attributes/FieldValue.h"
#include "program/desktop/attributes/LookedAt.h"

namespace desktop {

// The element of that identity that still lives in `doc`, itself included, or null; those of many
// in the order of the list.
host::BaseList2D* FindElement(host::BaseDocument& doc, engine::NodeId id);
std::vector<host::BaseList2D*> ElementsOf(host::BaseDocument& doc, const Ids& ids);

class FieldEditing {
 public:
  // Nothing happens where every element has that value already. Done when it returns unless the
  // elements are very many. Outlives what it began.
  void Set(host::BaseDocument& doc, const SharedIds& elements, const Field& field,
           const FieldEdit& edit);

 private:
  // Takes back the step before when this edit goes on with it and nothing else happened since.
  bool TakeBackBefore(host::BaseDocument& doc, const SharedIds& elements, const Field& field);

  host::ULLONG doc_ = 0;
  const Field* field_ = nullptr;
  SharedIds elements_;
  // Change count of the document right after the last edit that made a step
  host::ULLONG after_ = 0;
};

}  // namespace desktop
