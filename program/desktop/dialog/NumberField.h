// NumberField: a number with arrows, in the range, step and format of its gadget. Tells of a typed
// number when typing is done. Main thread.
#pragma once

#include <QDoubleSpinBox>

#include "engine/dialog/Dialogs.h"

namespace desktop {

class NumberField : public QDoubleSpinBox {
 public:
  explicit NumberField(QWidget* parent);

  // Takes over range, step, format and value without telling.
  void Show(const engine::Gadget& gadget);
  // A range as wide as numbers go would ask for a field as wide as the screen.
  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;
};

}  // namespace desktop
