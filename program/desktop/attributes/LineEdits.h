// The line edits of the attributes: a text that is typed and then confirmed, and a number with
// limits and unit. Main thread.
#pragma once

#include <QElapsedTimer>
#include <QLineEdit>
#include <functional>
#include <optional>

#include "engine/editing/Field.h"

namespace desktop {

// Stands where several elements have several values.
inline constexpr const char* kMixed = "\u2014";

// A line of text that a person types and then confirms: Enter or leaving takes it, Escape brings
// back what was there. Text that is refused stays, marked, until it is put right; on leaving it
// goes back, and a tip says so.
class ConfirmedLineEdit : public QLineEdit {
 public:
  explicit ConfirmedLineEdit(QWidget* parent);

  // Takes a text over; answers why not, or an empty text when it was taken. Called for typed text
  // only.
  std::function<QString(const QString&)> take;

  // Shows what there is, in place of what was typed. `mixed`: there are several texts.
  void ShowText(const QString& text, bool mixed = false);
  bool IsTyped() const { return isModified(); }
  // Finishes the typing, as leaving the field does.
  void Finish();

 protected:
  bool event(QEvent* event) override;
  // Shows that it goes on where there is no room for all of the text; the tip then begins with the
  // text.
  void paintEvent(QPaintEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;
  // Goes back to what there was.
  void Revert() { ShowText(shown_, mixed_); }
  // Shows a text below the field for a few seconds.
  void Tell(const QString& text);

 private:
  // The part of the field that shows text, in its own coordinates.
  QRect TextPlace() const;
  bool IsCut() const;
  // Empty when it was taken or nothing was typed.
  QString Take();
  // Colors the edge of the field while its text is refused.
  void Mark(bool refused);

  // The text as it was shown last, which Escape brings back.
  QString shown_;
  bool mixed_ = false;
  bool marked_ = false;
};

// A number that is typed, or stepped with the arrow keys and, while it has the focus, the wheel.
// Numbers are in the unit that is shown, for instance percent where the document holds a share.
class NumberLineEdit : public ConfirmedLineEdit {
 public:
  // Limits, step and unit of `field`. `mark` is a letter shown before the number; 0 for none.
  NumberLineEdit(const engine::Field& field, char mark, QWidget* parent);

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
  // The problem with the text, empty where it was taken.
  QString TakeText(const QString& text);
  void Enter(double number, bool goesOn);
  // By so many steps of the field, within its limits. Steps that follow each other within a second
  // are one edit.
  void Step(double steps);

  const engine::Field& field_;
  char mark_;
  // Nothing while there are several numbers.
  std::optional<double> number_;
  QElapsedTimer sinceStep_;
  // Eighths of a degree that were turned and made no whole step yet.
  int wheel_ = 0;
};

// The number as shown: at most four digits behind the point. The number that a text is, with or
// without the unit; else why not.
QString NumberText(double number);
std::optional<double> ReadNumber(const QString& text, const engine::Field& field, QString* problem);

}  // namespace desktop
