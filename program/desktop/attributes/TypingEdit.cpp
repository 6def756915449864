#include "program/desktop/attributes/TypingEdit.h"

#include <QKeyEvent>
#include <QToolTip>

namespace desktop {

namespace {

constexpr const char* kMixed = "\u2014";
constexpr const char* kRefusedLook = "border-color: #c7604f";
constexpr int kMillisecondsTold = 4000;

}  // namespace

TypingEdit::TypingEdit(QWidget* parent) : QLineEdit(parent) {}

void TypingEdit::ShowText(const QString& text, bool mixed) {
  shown_ = text;
  mixed_ = mixed;
  Mark(false);
  setPlaceholderText(mixed ? kMixed : QString());
  const QString wanted = mixed ? QString() : text;
  if (this->text() != wanted || isModified()) {
    setText(wanted);
    setCursorPosition(0);
  }
  setModified(false);
}

QString TypingEdit::Take() {
  if (!isModified()) return {};
  const QString typed = text();
  if ((mixed_ && typed.isEmpty()) || (!mixed_ && typed == shown_)) {
    Revert();
    return {};
  }
  QString problem = take ? take(typed) : QString();
  if (problem.isEmpty() && isModified()) ShowText(typed);
  return problem;
}

void TypingEdit::Finish() {
  const QString problem = Take();
  if (problem.isEmpty()) return;
  Revert();
  Tell(problem + " Nothing was changed.");
}

void TypingEdit::Tell(const QString& text) {
  QToolTip::showText(mapToGlobal(QPoint(0, height())), text, this, {}, kMillisecondsTold);
}

void TypingEdit::Mark(bool refused) {
  if (marked_ == refused) return;
  marked_ = refused;
  setStyleSheet(refused ? kRefusedLook : "");
}

// Once the typed text was taken, undo and redo are those of the scene.
bool TypingEdit::event(QEvent* event) {
  if (event->type() == QEvent::ShortcutOverride && !isModified()) {
    const auto& key = static_cast<QKeyEvent&>(*event);
    const bool redo = key.matches(QKeySequence::Redo) || (key.key() == Qt::Key_Z && key.modifiers() & Qt::ControlModifier);
    if (key.matches(QKeySequence::Undo) || redo) return false;
  }
  return QLineEdit::event(event);
}

void TypingEdit::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
    const QString problem = Take();
    Mark(!problem.isEmpty());
    if (!problem.isEmpty()) Tell(problem);
    selectAll();
  } else if (event->key() == Qt::Key_Escape && isModified()) {
    Revert();
    selectAll();
  } else {
    QLineEdit::keyPressEvent(event);
  }
}

void TypingEdit::focusOutEvent(QFocusEvent* event) {
  if (event->reason() != Qt::PopupFocusReason) Finish();
  QLineEdit::focusOutEvent(event);
}

}  // namespace desktop
