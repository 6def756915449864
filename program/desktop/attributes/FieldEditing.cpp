// Steps that follow each other (arrow keys, the wheel) make one undo step: the one before is taken
// back by undo and the edit made anew on top of what was there. That gives the right result for
// every kind of field, without a way to join two steps.
#include "program/desktop/attributes/FieldEditing.h"

#include "program/desktop/OpenDocument.h"
#include "program/desktop/background/SlicedEdit.h"

namespace desktop {

void FieldEditing::Set(host::BaseDocument& doc, const engine::SharedIds& elements,
                       const engine::Field& field, const engine::FieldEdit& edit) {
  // Only when nothing else has touched the document since: its change count is as it was left.
  const bool replaces = edit.goesOn && TakeBackBefore(doc, elements, field);
  const host::ULLONG before = engine::ChangeCount(doc);
  RunEdit(doc, engine::SetField(doc, engine::ElementsOf(doc, *elements), field, edit),
          [this, &doc, elements, &field, replaces, before](bool whole) {
            const bool changed = whole && engine::ChangeCount(doc) != before;
            // Stopped in the middle: the edit before it comes back.
            if (!whole && replaces) doc.DoRedo();
            // There and back again.
            if (whole && replaces && !changed) engine::ForgetUndone(doc);
            doc_ = IdentityOf(&doc);
            field_ = changed ? &field : nullptr;
            elements_ = elements;
            after_ = engine::ChangeCount(doc);
          });
}

bool FieldEditing::TakeBackBefore(host::BaseDocument& doc, const engine::SharedIds& elements,
                                  const engine::Field& field) {
  const bool same = doc_ == IdentityOf(&doc) && field_ == &field && *elements_ == *elements;
  return same && engine::ChangeCount(doc) == after_ && doc.DoUndo();
}

}  // namespace desktop
