// FieldEditing: edits one field of many elements in one undo step. Main thread.
#pragma once

#include "engine/editing/FieldValue.h"

namespace desktop {

class FieldEditing {
 public:
  // Nothing happens where every element has that value already. Done when it returns unless the
  // elements are very many. Outlives what it began.
  void Set(host::BaseDocument& doc, const engine::SharedIds& elements, const engine::Field& field,
           const engine::FieldEdit& edit);

 private:
  // Takes back the step before when this edit goes on with it and nothing else happened since.
  bool TakeBackBefore(host::BaseDocument& doc, const engine::SharedIds& elements,
                      const engine::Field& field);

  host::ULLONG doc_ = 0;
  const engine::Field* field_ = nullptr;
  engine::SharedIds elements_;
  // Change count of the document right after the last edit that made a step
  host::ULLONG after_ = 0;
};

}  // namespace desktop
