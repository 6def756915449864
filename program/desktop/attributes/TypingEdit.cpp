#include "program/desktop/attributes/TypingEdit.h"

#include <QHelpEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QStyleOptionFrame>
#include <QToolTip>

namespace desktop {

namespace {

constexpr const char* kMixed = "\u2014";
constexpr const char* kRefusedLook = "border-color: #c7604f";
constexpr int kFadingWidth = 14;
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

QRect TypingEdit::TextPlace() const {
  QStyleOptionFrame option;
  initStyleOption(&option);
  return style()
      ->subElementRect(QStyle::SE_LineEditContents, &option, this)
      .marginsRemoved(textMargins())
      .adjusted(2, 0, -2, 0);
}

bool TypingEdit::IsCut() const {
  return fontMetrics().horizontalAdvance(text()) > TextPlace().width();
}

// A number without its last digits would be another number: what is cut fades away.
void TypingEdit::paintEvent(QPaintEvent* event) {
  if (hasFocus() || !IsCut() || text().isRightToLeft()) return QLineEdit::paintEvent(event);
  QStyleOptionFrame option;
  initStyleOption(&option);
  QPainter painter(this);
  style()->drawPrimitive(QStyle::PE_PanelLineEdit, &option, &painter, this);
  const QRect place = TextPlace();
  QColor color = palette().color(QPalette::Text);
  QLinearGradient fading(place.right() - kFadingWidth, 0, place.right(), 0);
  fading.setColorAt(0, color);
  color.setAlpha(0);
  fading.setColorAt(1, color);
  painter.setPen(QPen(fading, 1));
  painter.drawText(place, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, text());
}

// Once the typed text was taken, undo and redo are those of the scene.
bool TypingEdit::event(QEvent* event) {
  if (event->type() == QEvent::ShortcutOverride && !isModified()) {
    const auto& key = static_cast<QKeyEvent&>(*event);
    const bool redo = key.matches(QKeySequence::Redo) ||
                      (key.key() == Qt::Key_Z && key.modifiers() & Qt::ControlModifier);
    if (key.matches(QKeySequence::Undo) || redo) return false;
  }
  if (event->type() == QEvent::ToolTip && IsCut()) {
    QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(),
                       toolTip().isEmpty() ? text() : text() + "\n" + toolTip(), this);
    return true;
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
