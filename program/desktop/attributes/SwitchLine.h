// SwitchLine: a check box; half checked where the elements differ. Main thread.
#pragma once

#include <QCheckBox>

#include "program/desktop/attributes/LineField.h"

namespace desktop {

class SwitchLine : public LineField {
 public:
  SwitchLine(const Field& field, QWidget* parent);

  void Show(const FieldValue& value, const host::BaseDocument& doc) override;

 private:
  QCheckBox* box_;
};

}  // namespace desktop
