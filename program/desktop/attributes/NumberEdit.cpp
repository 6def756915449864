#include "program/desktop/attributes/NumberEdit.h"

#include <QKeyEvent>
#include <QPainter>
#include <QWheelEvent>
#include <algorithm>
#include <charconv>
#include <cmath>

namespace desktop {

namespace {

constexpr int kDecimals = 4;
constexpr int kRoundDigits = 12;
constexpr int kShownDigits = 6;
constexpr int kFewestDigits = 3;
constexpr int kFrame = 14;
constexpr int kMarkWidth = 13;
constexpr int kManySteps = 10;
constexpr int kNotch = 120;
constexpr qint64 kMillisecondsOfOneEdit = 1000;
constexpr double kHuge = 1e9;
constexpr double kTiny = 1e-4;

}  // namespace

QString NumberText(double number) {
  if (!std::isfinite(number)) return "?";
  const double size = std::abs(number);
  if (size >= kHuge || (size > 0 && size < kTiny)) return QString::number(number, 'g', 10);
  QString text = QString::number(number, 'f', kDecimals);
  while (text.endsWith('0')) text.chop(1);
  if (text.endsWith('.')) text.chop(1);
  return text == "-0" ? "0" : text;
}

std::optional<double> ReadNumber(const QString& text, const Field& field, QString* problem) {
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
  } else if ((field.kind == FieldKind::Whole || field.kind == FieldKind::Frame) &&
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

NumberEdit::NumberEdit(const Field& field, char mark, QWidget* parent)
    : TypingEdit(parent), field_(field), mark_(mark) {
  if (mark_) setTextMargins(kMarkWidth, 0, 0, 0);
  setToolTip(field.tip);
  take = [this](const QString& text) { return TakeText(text); };
}

void NumberEdit::ShowNumber(std::optional<double> number) {
  number_ = number;
  ShowText(number ? NumberText(*number) + field_.unit : QString(), !number);
}

QSize NumberEdit::sizeHint() const {
  return {fontMetrics().horizontalAdvance('0') * kShownDigits + kMarkWidth + kFrame,
          TypingEdit::sizeHint().height()};
}

QSize NumberEdit::minimumSizeHint() const {
  const int mark = mark_ ? kMarkWidth : 0;
  return {fontMetrics().horizontalAdvance('0') * kFewestDigits + mark + kFrame,
          TypingEdit::minimumSizeHint().height()};
}

QString NumberEdit::TakeText(const QString& text) {
  QString problem;
  if (const auto number = ReadNumber(text, field_, &problem)) Enter(*number, false);
  return problem;
}

void NumberEdit::Enter(double number, bool goesOn) {
  ShowNumber(number);
  if (entered) entered(number, goesOn);
}

void NumberEdit::Step(double steps) {
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

void NumberEdit::keyPressEvent(QKeyEvent* event) {
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
      TypingEdit::keyPressEvent(event);
  }
}

// Without the focus the wheel belongs to the list that the number stands in.
void NumberEdit::wheelEvent(QWheelEvent* event) {
  if (!hasFocus()) return event->ignore();
  wheel_ += event->angleDelta().y();
  const int notches = wheel_ / kNotch;
  wheel_ -= notches * kNotch;
  if (notches != 0) Step(notches);
  event->accept();
}

void NumberEdit::paintEvent(QPaintEvent* event) {
  TypingEdit::paintEvent(event);
  if (!mark_) return;
  QPainter painter(this);
  painter.setPen(palette().color(QPalette::PlaceholderText));
  painter.drawText(rect().adjusted(7, 0, 0, 0), Qt::AlignLeft | Qt::AlignVCenter,
                   QString(QChar(mark_)));
}

}  // namespace desktop
