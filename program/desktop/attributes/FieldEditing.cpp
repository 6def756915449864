#include "program/desktop/attributes/FieldEditing.h"

#include "engine/undo/Undo.h"
#include "program/desktop/attributes/TextureFile.h"

namespace desktop {

namespace {

std::string StepName(const Field& field) { return field.id == kFieldName ? "Rename" : field.label; }

void Apply(host::BaseDocument& doc, host::BaseList2D& element, const Field& field, const FieldEdit& edit) {
  const host::GeData before = ReadField(element, field);
  const host::GeData after = Edited(before, edit, field.kind);
  if (after == before) return;
  if (field.kind == FieldKind::Texture) return SetTextureFile(element, field.id, after.GetFilename());
  doc.AddUndo(host::UNDO_CHANGE, &element);
  WriteField(element, field, after);
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

void FieldEditing::Set(host::BaseDocument& doc, const SharedIds& elements, const Field& field, const FieldEdit& edit) {
  if (edit.goesOn) TakeBackBefore(doc, elements, field);
  const host::ULLONG before = engine::ChangeCount(doc);
  {
    const engine::UndoScope scope(doc, StepName(field));
    for (host::BaseList2D* element : ElementsOf(doc, *elements)) Apply(doc, *element, field, edit);
  }
  const bool changed = engine::ChangeCount(doc) != before;
  doc_ = IdentityOf(&doc);
  field_ = changed ? &field : nullptr;
  elements_ = elements;
  after_ = engine::ChangeCount(doc);
}

void FieldEditing::TakeBackBefore(host::BaseDocument& doc, const SharedIds& elements, const Field& field) {
  const bool same = doc_ == IdentityOf(&doc) && field_ == &field && *elements_ == *elements;
  if (same && engine::ChangeCount(doc) == after_) doc.DoUndo();
}

}  // namespace desktop
