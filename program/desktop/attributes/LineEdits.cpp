#include "program/desktop/attributes/LineEdits.h"

#include <QHelpEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QStyleOptionFrame>
#include <QToolTip>
#include <QWheelEvent>
#include <algorithm>
#include <charconv>
#include <cmath>

namespace desktop {

namespace {

constexpr const char* kRefusedLook = "border-color: #c7604f";
constexpr int kFadingWidth = 14;
constexpr int kMillisecondsTold = 4000;
// Digits behind the point that are shown, digits that a sum of steps is rounded to, and letters of
// the widget's usual and least width.
constexpr int kDecimals = 4;
constexpr int kRoundDigits = 12;
constexpr int kShownDigits = 6;
constexpr int kFewestDigits = 3;
constexpr int kFrame = 14;
constexpr int kMarkWidth = 13;
constexpr int kManySteps = 10;
// Steps with less time between them become one undo step.
constexpr qint64 kMillisecondsOfOneEdit = 1000;
// Outside of these sizes a number is shown with an exponent.
constexpr double kHuge = 1e9;
constexpr double kTiny = 1e-4;

}  // namespace

ConfirmedLineEdit::ConfirmedLineEdit(QWidget* parent) : QLineEdit(parent) {}

// The text is only set where it differs: setting it moves the cursor and drops the selection.
void ConfirmedLineEdit::ShowText(const QString& text, bool mixed) {
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

// A text that is as it was before is no edit. `take` may have shown something else already,
// a number rounded to its unit, say.
QString ConfirmedLineEdit::Take() {
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

// Nothing is asked on leaving: a box would take the focus from where the person just went.
void ConfirmedLineEdit::Finish() {
  const QString problem = Take();
  if (problem.isEmpty()) return;
  Revert();
  Tell(problem + " Nothing was changed.");
}

void ConfirmedLineEdit::Tell(const QString& text) {
  QToolTip::showText(mapToGlobal(QPoint(0, height())), text, this, {}, kMillisecondsTold);
}

void ConfirmedLineEdit::Mark(bool refused) {
  if (marked_ == refused) return;
  marked_ = refused;
  setStyleSheet(refused ? kRefusedLook : "");
}

// The toolkit leaves two pixels at both ends inside of what its style says.
QRect ConfirmedLineEdit::TextPlace() const {
  QStyleOptionFrame option;
  initStyleOption(&option);
  return style()
      ->subElementRect(QStyle::SE_LineEditContents, &option, this)
      .marginsRemoved(textMargins())
      .adjusted(2, 0, -2, 0);
}

bool ConfirmedLineEdit::IsCut() const {
  return fontMetrics().horizontalAdvance(text()) > TextPlace().width();
}

// A number without its last digits would be another number: what is cut fades away.
void ConfirmedLineEdit::paintEvent(QPaintEvent* event) {
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
bool ConfirmedLineEdit::event(QEvent* event) {
  if (event->type() == QEvent::ShortcutOverride && !isModified()) {
    const auto& key = static_cast<QKeyEvent&>(*event);
    const bool redo = key.matches(QKeySequence::Redo) ||
                      (key.key() == Qt::Key_Z && key.modifiers() & Qt::ControlModifier);
    // Not accepted: then the key is the window's command.
    if (key.matches(QKeySequence::Undo) || redo) return false;
  }
  if (event->type() == QEvent::ToolTip && IsCut()) {
    QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(),
                       toolTip().isEmpty() ? text() : text() + "\n" + toolTip(), this);
    return true;
  }
  return QLineEdit::event(event);
}

// Enter is not handed on: it would press the default button of a box around the field.
void ConfirmedLineEdit::keyPressEvent(QKeyEvent* event) {
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

// A context menu of the field itself takes the focus for a while; that is no leaving.
void ConfirmedLineEdit::focusOutEvent(QFocusEvent* event) {
  if (event->reason() != Qt::PopupFocusReason) Finish();
  QLineEdit::focusOutEvent(event);
}

// Never by the locale: a number that is copied out must be readable by every program.
QString NumberText(double number) {
  if (!std::isfinite(number)) return "?";
  const double size = std::abs(number);
  if (size >= kHuge || (size > 0 && size < kTiny)) return QString::number(number, 'g', 10);
  QString text = QString::number(number, 'f', kDecimals);
  while (text.endsWith('0')) text.chop(1);
  if (text.endsWith('.')) text.chop(1);
  return text == "-0" ? "0" : text;
}

// The typographic minus (U+2212) comes in with text that was copied from a page. std::from_chars
// knows no plus sign, and needs the whole text to be the number.
std::optional<double> ReadNumber(const QString& text, const engine::Field& field,
                                 QString* problem) {
  QString plain = text.trimmed();
  const QString unit = QString(field.unit).trimmed();
  if (!unit.isEmpty() && plain.endsWith(unit)) plain = plain.chopped(unit.size()).trimmed();
  plain.replace(QChar(0x2212), '-');
  if (plain.startsWith('+')) plain.remove(0, 1);
  const std::string digits = plain.toStdString();
  double number = 0;
  const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  const bool whole = read.ptr == digits.data() + digits.size() && !digits.empty();
  if (read.ec == std::errc::result_out_of_range && whole) {
    *problem = "The number is too large or too small.";
  } else if (read.ec != std::errc() || !whole || !std::isfinite(number)) {
    *problem = "Type a number such as 12 or 0.5.";
  } else if ((field.kind == engine::FieldKind::Whole || field.kind == engine::FieldKind::Frame) &&
             number != std::round(number)) {
    *problem = "Type a whole number.";
  } else if (number < field.min || number > field.max) {
    *problem =
        QString("Type a number from %1 to %2.").arg(NumberText(field.min), NumberText(field.max));
  } else {
    return number;
  }
  return std::nullopt;
}

NumberLineEdit::NumberLineEdit(const engine::Field& field, char mark, QWidget* parent)
    : ConfirmedLineEdit(parent), field_(field), mark_(mark) {
  if (mark_) setTextMargins(kMarkWidth, 0, 0, 0);
  setToolTip(field.tip);
  take = [this](const QString& text) { return TakeText(text); };
}

void NumberLineEdit::ShowNumber(std::optional<double> number) {
  number_ = number;
  ShowText(number ? NumberText(*number) + field_.unit : QString(), !number);
}

QSize NumberLineEdit::sizeHint() const {
  return {fontMetrics().horizontalAdvance('0') * kShownDigits + kMarkWidth + kFrame,
          ConfirmedLineEdit::sizeHint().height()};
}

QSize NumberLineEdit::minimumSizeHint() const {
  const int mark = mark_ ? kMarkWidth : 0;
  return {fontMetrics().horizontalAdvance('0') * kFewestDigits + mark + kFrame,
          ConfirmedLineEdit::minimumSizeHint().height()};
}

QString NumberLineEdit::TakeText(const QString& text) {
  QString problem;
  if (const auto number = ReadNumber(text, field_, &problem)) Enter(*number, false);
  return problem;
}

void NumberLineEdit::Enter(double number, bool goesOn) {
  ShowNumber(number);
  if (entered) entered(number, goesOn);
}

// From what is typed, if anything is; several numbers have none to begin at.
void NumberLineEdit::Step(double steps) {
  QString problem;
  const auto from = IsTyped() ? ReadNumber(text(), field_, &problem) : number_;
  if (!from || !std::isfinite(*from)) {
    Tell(problem.isEmpty() ? "There are several numbers here. Type one for all of them." : problem);
    return;
  }
  // Sums of steps stay the round numbers that one expects to see.
  const double wanted = QString::number(*from + steps * field_.step, 'g', kRoundDigits).toDouble();
  const double number = std::clamp(wanted, field_.min, field_.max);
  const bool goesOn = sinceStep_.isValid() && sinceStep_.elapsed() < kMillisecondsOfOneEdit;
  sinceStep_.start();
  if (number != number_ || IsTyped()) Enter(number, goesOn);
}

void NumberLineEdit::keyPressEvent(QKeyEvent* event) {
  const double many = event->modifiers() & Qt::ShiftModifier ? kManySteps : 1;
  switch (event->key()) {
    case Qt::Key_Up:
      return Step(many);
    case Qt::Key_Down:
      return Step(-many);
    case Qt::Key_PageUp:
      return Step(kManySteps);
    case Qt::Key_PageDown:
      return Step(-kManySteps);
    default:
      ConfirmedLineEdit::keyPressEvent(event);
  }
}

// Without the focus the wheel belongs to the list that the number stands in.
void NumberLineEdit::wheelEvent(QWheelEvent* event) {
  if (!hasFocus()) return event->ignore();
  wheel_ += event->angleDelta().y();
  // Fine wheels send parts of a notch, which add up.
  const int notches = wheel_ / QWheelEvent::DefaultDeltasPerStep;
  wheel_ -= notches * QWheelEvent::DefaultDeltasPerStep;
  if (notches != 0) Step(notches);
  event->accept();
}

void NumberLineEdit::paintEvent(QPaintEvent* event) {
  ConfirmedLineEdit::paintEvent(event);
  if (!mark_) return;
  QPainter painter(this);
  painter.setPen(palette().color(QPalette::PlaceholderText));
  painter.drawText(rect().adjusted(7, 0, 0, 0), Qt::AlignLeft | Qt::AlignVCenter,
                   QString(QChar(mark_)));
}

}  // namespace desktop
