#include "program/desktop/attributes/LineField.h"

#include <QHBoxLayout>

#include "program/desktop/attributes/ChoiceLine.h"
#include "program/desktop/attributes/NumberLine.h"
#include "program/desktop/attributes/SwitchLine.h"
#include "program/desktop/attributes/TextLine.h"

namespace desktop {

LineField::LineField(const Field& field, QWidget* parent) : QWidget(parent), field_(field) {
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(4);
  setToolTip(field.tip);
}

void LineField::FinishTyping() {
  for (TypingEdit* edit : edits_) {
    if (edit->IsTyped()) edit->Finish();
  }
}

void LineField::Tell(const FieldEdit& edit) const {
  if (edited) edited(edit);
}

LineField* LineField::Make(const Field& field, QWidget* parent) {
  switch (field.kind) {
    case FieldKind::Text:
    case FieldKind::File:
    case FieldKind::Texture:
      return new TextLine(field, parent);
    case FieldKind::Switch:
      return new SwitchLine(field, parent);
    case FieldKind::Choice:
    case FieldKind::Layer:
    case FieldKind::Material:
    case FieldKind::Camera:
    case FieldKind::Settings:
      return new ChoiceLine(field, parent);
    default:
      return new NumberLine(field, parent);
  }
}

}  // namespace desktop
