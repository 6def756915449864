#include "program/desktop/panels/ObjectSelection.h"

#include "host/BaseObject.h"

namespace desktop {

namespace {

host::LONG ModeFor(const host::BaseObject& object, QItemSelectionModel::SelectionFlags command) {
  const bool takesOff =
      command.testFlag(QItemSelectionModel::Deselect) ||
      (command.testFlag(QItemSelectionModel::Toggle) && object.GetBit(host::BIT_ACTIVE));
  return takesOff ? host::SELECTION_SUB : host::SELECTION_ADD;
}

}  // namespace

bool ObjectSelection::Has(const QModelIndex& index) const {
  const host::BaseObject* object = rows_.ObjectAt(index);
  return object && object->GetBit(host::BIT_ACTIVE);
}

void ObjectSelection::select(const QItemSelection& selection, SelectionFlags command) {
  host::BaseDocument* doc = rows_.Document();
  if (!doc || command == NoUpdate) return;
  if (command.testFlag(Clear)) {
    doc->SetActiveObject(nullptr);
    doc->SetActiveTag(nullptr);
  }
  for (const QItemSelectionRange& range : selection) {
    const int above = static_cast<int>(range.parent().isValid() ? range.parent().internalId() : 0);
    const int first = rows_.Shape().At(above).firstChild;
    for (int row = range.top(); row <= range.bottom(); ++row) {
      host::BaseObject* object =
          engine::AsObject(engine::FindNode(doc, rows_.Shape().At(first + row).id));
      if (object) doc->SetActiveObject(object, ModeFor(*object, command));
    }
  }
  host::EventAdd();
}

}  // namespace desktop
