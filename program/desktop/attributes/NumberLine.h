// NumberLine: one to three numbers side by side; with a color, a patch of it before them that opens
// a chooser. Main thread.
#pragma once

#include <QToolButton>

#include "program/desktop/attributes/LineField.h"
#include "program/desktop/attributes/NumberEdit.h"

namespace desktop {

class NumberLine : public LineField {
 public:
  NumberLine(const Field& field, QWidget* parent);

  void Show(const FieldValue& value, const host::BaseDocument& doc) override;

 private:
  void AddPatch();
  void ShowPatch();
  void ChooseColor();
  void Entered(std::size_t part, double number, bool goesOn);
  host::GeData Kept(double number) const;

  std::vector<NumberEdit*> numbers_;
  QToolButton* patch_ = nullptr;
  FieldValue value_;
};

}  // namespace desktop
