#include "program/desktop/dialog/NumberField.h"

#include <QSignalBlocker>

namespace desktop {

namespace {

constexpr int kRealDecimals = 3;
constexpr int kShownDigits = 9;
constexpr int kFewestDigits = 5;
constexpr int kDigitsOfArrows = 4;

}  // namespace

NumberField::NumberField(QWidget* parent) : QDoubleSpinBox(parent) {
  setKeyboardTracking(false);
  setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
  setLocale(QLocale::c());
}

void NumberField::Show(const engine::Gadget& gadget) {
  const QSignalBlocker quiet(this);
  setDecimals(gadget.format == host::FORMAT_LONG ? 0 : kRealDecimals);
  setRange(gadget.min, gadget.max);
  setSingleStep(gadget.step);
  setValue(gadget.value.GetReal());
}

QSize NumberField::sizeHint() const {
  const int digit = fontMetrics().horizontalAdvance('0');
  return {digit * (kShownDigits + kDigitsOfArrows), QDoubleSpinBox::sizeHint().height()};
}

QSize NumberField::minimumSizeHint() const {
  return {fontMetrics().horizontalAdvance('0') * (kFewestDigits + kDigitsOfArrows),
          sizeHint().height()};
}

}  // namespace desktop
