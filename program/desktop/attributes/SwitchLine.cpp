#include "program/desktop/attributes/SwitchLine.h"

#include <QHBoxLayout>

namespace desktop {

SwitchLine::SwitchLine(const Field& field, QWidget* parent)
    : LineField(field, parent), box_(new QCheckBox(this)) {
  box_->setToolTip(field.tip);
  box_->setAccessibleName(field.label);
  layout()->addWidget(box_);
  static_cast<QHBoxLayout*>(layout())->addStretch();
  setFocusProxy(box_);
  connect(box_, &QCheckBox::clicked, this, [this] {
    box_->setTristate(false);
    Tell({host::GeData(host::LONG(box_->isChecked() ? 1 : 0))});
  });
}

void SwitchLine::Show(const FieldValue& value, const host::BaseDocument&) {
  box_->setTristate(value.mixed[0]);
  box_->setCheckState(value.mixed[0]          ? Qt::PartiallyChecked
                      : value.value.GetBool() ? Qt::Checked
                                              : Qt::Unchecked);
}

}  // namespace desktop
