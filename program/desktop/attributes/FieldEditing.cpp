#include "program/desktop/attributes/FieldEditing.h"

#include "host/Application.h"
#include "program/desktop/attributes/TextureFile.h"
#include "program/desktop/background/SlicedEdit.h"

namespace desktop {

namespace {

std::string StepName(const Field& field) { return field.id == kFieldName ? "Rename" : field.label; }

void Apply(host::BaseDocument& doc, host::BaseList2D& element, const Field& field,
           const FieldEdit& edit) {
  const host::GeData before = ReadField(element, field);
  const host::GeData after = Edited(before, edit, field.kind);
  if (after == before) return;
  if (field.kind == FieldKind::Texture)
    return SetTextureFile(element, field.id, after.GetFilename());
  doc.AddUndo(host::UNDO_CHANGE, &element);
  WriteField(element, field, after);
}

engine::StepwiseEdit SetAll(host::BaseDocument& doc, std::vector<host::BaseList2D*> elements,
                            const Field& field, const FieldEdit& edit) {
  const std::size_t steps = elements.size();
  return {StepName(field), steps,
          [&doc, elements = std::move(elements), &field, edit](std::size_t i) {
            Apply(doc, *elements[i], field, edit);
          },
          [] { host::EventAdd(); }};
}

}  // namespace

host::BaseList2D* FindElement(host::BaseDocument& doc, engine::NodeId id) {
  return id == engine::IdOf(doc) ? &doc : engine::FindNode(&doc, id);
}

std::vector<host::BaseList2D*> ElementsOf(host::BaseDocument& doc, const Ids& ids) {
  std::vector<host::BaseList2D*> elements;
  elements.reserve(ids.size());
  for (const engine::NodeId id : ids) {
    if (host::BaseList2D* element = FindElement(doc, id)) elements.push_back(element);
  }
  return elements;
}

void FieldEditing::Set(host::BaseDocument& doc, const SharedIds& elements, const Field& field,
                       const FieldEdit& edit) {
  const bool replaces = edit.goesOn && TakeBackBefore(doc, elements, field);
  const host::ULLONG before = engine::ChangeCount(doc);
  RunEdit(doc, SetAll(doc, ElementsOf(doc, *elements), field, edit),
          [this, &doc, elements, &field, replaces, before](bool whole) {
            const bool changed = whole && engine::ChangeCount(doc) != before;
            if (!whole && replaces) doc.DoRedo();
            // There and back again.
            if (whole && replaces && !changed) engine::ForgetUndone(doc);
            doc_ = IdentityOf(&doc);
            field_ = changed ? &field : nullptr;
            elements_ = elements;
            after_ = engine::ChangeCount(doc);
          });
}

bool FieldEditing::TakeBackBefore(host::BaseDocument& doc, const SharedIds& elements,
                                  const Field& field) {
  const bool same = doc_ == IdentityOf(&doc) && field_ == &field && *elements_ == *elements;
  return same && engine::ChangeCount(doc) == after_ && doc.DoUndo();
}

}  // namespace desktop
