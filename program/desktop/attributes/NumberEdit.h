// NumberEdit: a number that is typed, or stepped with the arrow keys and, while it has the focus,
// the wheel. Main thread.
#pragma once

#include <QElapsedTimer>
#include <optional>

#include "program/desktop/attributes/Field.h"
#include "program/desktop/attributes/TypingEdit.h"

namespace desktop {

class NumberEdit : public TypingEdit {
 public:
  // Limits, step and unit of `field`. `mark` is a letter shown before the number; 0 for none.
  NumberEdit(const Field& field, char mark, QWidget* parent);

  // A new number within the limits, as shown; `goesOn` as in FieldEdit.
  std::function<void(double, bool goesOn)> entered;

  // Nothing: there are several numbers.
  void ShowNumber(std::optional<double> number);
  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  QString TakeText(const QString& text);
  void Enter(double number, bool goesOn);
  void Step(double steps);

  const Field& field_;
  char mark_;
  std::optional<double> number_;
  QElapsedTimer sinceStep_;
  int wheel_ = 0;
};

// The number as shown: at most four digits behind the point. The number that a text is, with or
// without the unit; else why not.
QString NumberText(double number);
std::optional<double> ReadNumber(const QString& text, const Field& field, QString* problem);

}  // namespace desktop
