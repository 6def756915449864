// TypingEdit: a line of text that a person types and then confirms: Enter or leaving takes it,
// Escape brings back what was there. Text that is refused stays, marked, until it is put right; on
// leaving it goes back, and says so. Main thread.
#pragma once

#include <QLineEdit>
#include <functional>

namespace desktop {

class TypingEdit : public QLineEdit {
 public:
  explicit TypingEdit(QWidget* parent);

  // Takes a text over; answers why not, or an empty text when it was taken. Called for typed text
  // only.
  std::function<QString(const QString&)> take;

  // Shows what there is, in place of what was typed. `mixed`: there are several texts.
  void ShowText(const QString& text, bool mixed = false);
  bool IsTyped() const { return isModified(); }
  // As leaving does.
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
  void Tell(const QString& text);

 private:
  QRect TextPlace() const;
  bool IsCut() const;
  // Empty when it was taken or nothing was typed.
  QString Take();
  void Mark(bool refused);

  QString shown_;
  bool mixed_ = false;
  bool marked_ = false;
};

}  // namespace desktop
