#include "program/desktop/CalmStyle.h"

#include <QPainter>
#include <QStyleOption>
#include <QTabBar>
#include <QTime>
#include <QToolButton>

#include "program/desktop/Icons.h"
#include "program/desktop/Look.h"

namespace desktop {

namespace {

constexpr double kRound = 4;
// Of a progress bar that runs to and fro.
constexpr double kRunnerShare = 0.3;

// Painter settings for shapes with soft edges, taken back at the end.
class SoftPainter {
 public:
  explicit SoftPainter(QPainter& painter) : painter_(painter) {
    painter_.save();
    painter_.setRenderHint(QPainter::Antialiasing);
  }
  SoftPainter(const SoftPainter&) = delete;
  SoftPainter& operator=(const SoftPainter&) = delete;
  ~SoftPainter() { painter_.restore(); }
  QPainter* operator->() { return &painter_; }

 private:
  QPainter& painter_;
};

bool Is(const QStyleOption& option, QStyle::State state) { return (option.state & state) == state; }

// Where a point of a unit square lies in `rect`.
QPointF At(const QRectF& rect, double x, double y) {
  return {rect.left() + x * rect.width(), rect.top() + y * rect.height()};
}

void DrawBox(QPainter& painter, const QRect& rect, QRgb ground, QRgb edge, double round = kRound) {
  SoftPainter soft(painter);
  soft->setPen(QColor(edge));
  soft->setBrush(QColor(ground));
  soft->drawRoundedRect(QRectF(rect).adjusted(0.5, 0.5, -0.5, -0.5), round, round);
}

QRgb EdgeOf(const QStyleOption& option) {
  return Is(option, QStyle::State_Enabled | QStyle::State_HasFocus) ? PresentLook().accent
                                                                    : PresentLook().edge;
}

// Of something one types into or chooses from.
void DrawField(QPainter& painter, const QStyleOption& option, bool isButton) {
  const bool enabled = Is(option, QStyle::State_Enabled);
  const bool lit = enabled && Is(option, QStyle::State_MouseOver);
  const QRgb button = !enabled ? PresentLook().window
                      : lit    ? PresentLook().litButton
                               : PresentLook().button;
  DrawBox(painter, option.rect,
          isButton  ? button
          : enabled ? PresentLook().field
                    : PresentLook().window,
          EdgeOf(option));
}

void DrawChevron(QPainter& painter, const QRect& rect, int quarterTurns, bool enabled) {
  constexpr double kHalfWidth = 3.2;
  SoftPainter soft(painter);
  soft->setPen(QPen(QColor(enabled ? PresentLook().quiet : PresentLook().faintMark), 1.4,
                    Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  soft->translate(QRectF(rect).center());
  soft->rotate(90.0 * quarterTurns);
  soft->drawPolyline(QPolygonF(
      {{-kHalfWidth, -kHalfWidth / 2}, {0, kHalfWidth / 2}, {kHalfWidth, -kHalfWidth / 2}}));
}

void DrawTick(QPainter& painter, const QRectF& box, QRgb color) {
  SoftPainter soft(painter);
  soft->setPen(QPen(QColor(color), 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  soft->drawPolyline(QPolygonF({At(box, 0.24, 0.52), At(box, 0.42, 0.72), At(box, 0.77, 0.3)}));
}

void DrawCheckBox(QPainter& painter, const QStyleOption& option) {
  const bool enabled = Is(option, QStyle::State_Enabled);
  const bool lit = enabled && (option.state & (QStyle::State_MouseOver | QStyle::State_HasFocus));
  DrawBox(painter, option.rect, PresentLook().field,
          lit       ? PresentLook().accent
          : enabled ? PresentLook().idleBox
                    : PresentLook().edge,
          2.5);
  const QRectF box(option.rect);
  const QRgb mark = enabled ? PresentLook().accent : PresentLook().faint;
  if (Is(option, QStyle::State_On)) DrawTick(painter, box, mark);
  if (!Is(option, QStyle::State_NoChange)) return;
  SoftPainter soft(painter);
  soft->setPen(QPen(QColor(mark), 2, Qt::SolidLine, Qt::RoundCap));
  soft->drawLine(At(box, 0.3, 0.5), At(box, 0.7, 0.5));
}

void DrawRadioButton(QPainter& painter, const QStyleOption& option) {
  const bool enabled = Is(option, QStyle::State_Enabled);
  const bool lit = enabled && (option.state & (QStyle::State_MouseOver | QStyle::State_HasFocus));
  const int side = std::min(option.rect.width(), option.rect.height());
  DrawBox(painter, option.rect, PresentLook().field,
          lit       ? PresentLook().accent
          : enabled ? PresentLook().idleBox
                    : PresentLook().edge,
          side / 2.0);
  if (!Is(option, QStyle::State_On)) return;
  SoftPainter soft(painter);
  soft->setPen(Qt::NoPen);
  soft->setBrush(QColor(enabled ? PresentLook().accent : PresentLook().faint));
  soft->drawEllipse(QRectF(option.rect).center(), side * 0.24, side * 0.24);
}

void DrawRing(QPainter& painter, const QRect& rect) {
  SoftPainter soft(painter);
  soft->setPen(QColor(PresentLook().accent));
  soft->drawRoundedRect(QRectF(rect).adjusted(0.5, 0.5, -0.5, -0.5), kRound, kRound);
}

// Where something dragged would go: a line between two rows, with a ring where it begins, or a
// frame around a row.
void DrawDropPlace(QPainter& painter, const QRect& rect) {
  constexpr double kRing = 3;
  if (rect.isNull()) return;
  SoftPainter soft(painter);
  soft->setPen(QPen(QColor(PresentLook().accent), 2));
  if (rect.height() > 0) {
    soft->drawRoundedRect(QRectF(rect).adjusted(1, 1, -1, -1), kRound, kRound);
    return;
  }
  const double y = std::max<double>(rect.top(), kRing + 1);
  soft->drawEllipse(QPointF(rect.left() + kRing + 1, y), kRing, kRing);
  soft->drawLine(QPointF(rect.left() + 2 * kRing + 1, y), QPointF(rect.right(), y));
}

void DrawSlider(QPainter& painter, const QStyleOptionSlider& slider, const QRect& groove,
                const QRect& handle) {
  constexpr int kLine = 4;
  constexpr double kKnob = 6;
  const bool enabled = Is(slider, QStyle::State_Enabled);
  const bool lit = enabled && (slider.state & (QStyle::State_MouseOver | QStyle::State_HasFocus));
  const QPoint middle = groove.center();
  const bool flat = slider.orientation == Qt::Horizontal;
  const QRect line = flat ? QRect(groove.left(), middle.y() - kLine / 2 + 1, groove.width(), kLine)
                          : QRect(middle.x() - kLine / 2 + 1, groove.top(), kLine, groove.height());
  DrawBox(painter, line, PresentLook().field, PresentLook().edge, kLine / 2.0);
  SoftPainter soft(painter);
  soft->setPen(QPen(QColor(lit ? PresentLook().accent : PresentLook().edge), 1.4));
  soft->setBrush(QColor(enabled ? PresentLook().quiet : PresentLook().edge));
  soft->drawEllipse(QRectF(handle).center(), kKnob, kKnob);
}

void DrawToolButton(QPainter& painter, const QStyleOption& option) {
  const bool pressed = option.state & (QStyle::State_Sunken | QStyle::State_On);
  const bool lit = Is(option, QStyle::State_Enabled | QStyle::State_MouseOver);
  if (!pressed && !lit) return;
  const QRgb ground = pressed ? PresentLook().selected : PresentLook().litButton;
  DrawBox(painter, option.rect, ground, ground);
}

void DrawSplitter(QPainter& painter, const QStyleOption& option) {
  painter.fillRect(option.rect, QColor(Is(option, QStyle::State_MouseOver) ? PresentLook().accent
                                                                           : PresentLook().field));
}

void DrawHeader(QPainter& painter, const QStyleOption& option) {
  painter.fillRect(option.rect, QColor(PresentLook().bar));
  painter.setPen(QColor(PresentLook().button));
  painter.drawLine(option.rect.bottomLeft(), option.rect.bottomRight());
}

// Where nobody knows how much there is to do, a short piece runs to and fro whenever the bar is
// drawn: 0..1.
double RunnerPlace() {
  constexpr int kWay = 1200;  // milliseconds
  const int now = QTime::currentTime().msecsSinceStartOfDay() % (2 * kWay);
  return (now < kWay ? now : 2 * kWay - now) / static_cast<double>(kWay);
}

void DrawProgress(QPainter& painter, const QStyleOptionProgressBar& bar) {
  DrawBox(painter, bar.rect, PresentLook().field, PresentLook().edge);
  const double whole = static_cast<double>(bar.maximum) - bar.minimum;
  const double share = whole > 0 ? (bar.progress - bar.minimum) / whole : kRunnerShare;
  QRect done = bar.rect.adjusted(2, 2, -2, -2);
  const int room = done.width();
  done.setWidth(static_cast<int>(room * share));
  if (whole <= 0) done.translate(static_cast<int>((room - done.width()) * RunnerPlace()), 0);
  const QRgb color = Is(bar, QStyle::State_Enabled) ? PresentLook().accent : PresentLook().edge;
  if (done.width() > 1) DrawBox(painter, done, color, color, 2.5);
}

int ChevronTurns(QStyle::PrimitiveElement element) {
  switch (element) {
    case QStyle::PE_IndicatorArrowLeft:
      return 1;
    case QStyle::PE_IndicatorArrowUp:
      return 2;
    case QStyle::PE_IndicatorArrowRight:
      return 3;
    default:
      return 0;
  }
}

}  // namespace

void CalmStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option,
                              QPainter* painter, const QWidget* widget) const {
  switch (element) {
    case PE_IndicatorCheckBox:
    case PE_IndicatorItemViewItemCheck:
      return DrawCheckBox(*painter, *option);
    case PE_IndicatorTabClose:
      if (Is(*option, State_MouseOver))
        DrawBox(*painter, option->rect, PresentLook().litButton, PresentLook().litButton);
      return Icon("close").paint(painter, option->rect.adjusted(2, 2, -2, -2));
    case PE_IndicatorMenuCheckMark:
      return DrawTick(*painter, option->rect,
                      Is(*option, State_Enabled) ? PresentLook().accent : PresentLook().faint);
    case PE_IndicatorRadioButton:
      return DrawRadioButton(*painter, *option);
    case PE_FrameFocusRect:
      // Everything else shows it in its own edge.
      if (qobject_cast<const QToolButton*>(widget) || qobject_cast<const QTabBar*>(widget))
        DrawRing(*painter, option->rect);
      return;
    case PE_IndicatorArrowDown:
    case PE_IndicatorArrowUp:
    case PE_IndicatorArrowLeft:
    case PE_IndicatorArrowRight:
      return DrawChevron(*painter, option->rect, ChevronTurns(element), Is(*option, State_Enabled));
    case PE_IndicatorBranch:
      if (Is(*option, State_Children))
        DrawChevron(*painter, option->rect, Is(*option, State_Open) ? 0 : 3, true);
      return;
    case PE_IndicatorItemViewItemDrop:
      return DrawDropPlace(*painter, option->rect);
    case PE_PanelButtonTool:
      return DrawToolButton(*painter, *option);
    case PE_PanelLineEdit:
      if (const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
          frame && frame->lineWidth > 0) {
        return DrawField(*painter, *option, false);
      }
      break;
    default:
      break;
  }
  QProxyStyle::drawPrimitive(element, option, painter, widget);
}

void CalmStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                            const QWidget* widget) const {
  switch (element) {
    case CE_HeaderSection:
    case CE_HeaderEmptyArea:
      return DrawHeader(*painter, *option);
    case CE_Splitter:
      return DrawSplitter(*painter, *option);
    case CE_ProgressBarGroove:
      return;
    case CE_ProgressBarContents:
      if (const auto* bar = qstyleoption_cast<const QStyleOptionProgressBar*>(option);
          bar && bar->maximum > bar->minimum) {
        return DrawProgress(*painter, *bar);
      }
      break;
    default:
      break;
  }
  QProxyStyle::drawControl(element, option, painter, widget);
}

void CalmStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                                   QPainter* painter, const QWidget* widget) const {
  if (const auto* combo = qstyleoption_cast<const QStyleOptionComboBox*>(option);
      combo && control == CC_ComboBox) {
    DrawField(*painter, *option, !combo->editable);
    DrawChevron(*painter, subControlRect(control, option, SC_ComboBoxArrow, widget), 0,
                Is(*option, State_Enabled));
    return;
  }
  if (const auto* spin = qstyleoption_cast<const QStyleOptionSpinBox*>(option);
      spin && control == CC_SpinBox) {
    if (spin->frame) DrawField(*painter, *option, false);
    if (spin->buttonSymbols == QAbstractSpinBox::NoButtons) return;
    const bool enabled = Is(*option, State_Enabled);
    const QRect up = subControlRect(control, option, SC_SpinBoxUp, widget).translated(-2, 1);
    const QRect down = subControlRect(control, option, SC_SpinBoxDown, widget).translated(-2, -1);
    DrawChevron(*painter, up, 2, enabled && (spin->stepEnabled & QAbstractSpinBox::StepUpEnabled));
    DrawChevron(*painter, down, 0,
                enabled && (spin->stepEnabled & QAbstractSpinBox::StepDownEnabled));
    return;
  }
  if (const auto* slider = qstyleoption_cast<const QStyleOptionSlider*>(option);
      slider && control == CC_Slider) {
    return DrawSlider(*painter, *slider, subControlRect(control, option, SC_SliderGroove, widget),
                      subControlRect(control, option, SC_SliderHandle, widget));
  }
  QProxyStyle::drawComplexControl(control, option, painter, widget);
}

QSize CalmStyle::sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                                  const QWidget* widget) const {
  constexpr int kAroundText = 10;
  QSize wanted = QProxyStyle::sizeFromContents(type, option, size, widget);
  if (type == CT_ComboBox || type == CT_SpinBox || type == CT_LineEdit) {
    wanted.setHeight(std::max(wanted.height(), option->fontMetrics.height() + kAroundText));
  }
  return wanted;
}

QRect CalmStyle::subElementRect(SubElement element, const QStyleOption* option,
                                const QWidget* widget) const {
  constexpr int kBesideText = 4;
  const QRect rect = QProxyStyle::subElementRect(element, option, widget);
  const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
  const bool isField = element == SE_LineEditContents && frame && frame->lineWidth > 0;
  return isField ? rect.adjusted(kBesideText, 0, -kBesideText, 0) : rect;
}

int CalmStyle::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                         QStyleHintReturn* more) const {
  switch (hint) {
    case SH_DialogButtonBox_ButtonsHaveIcons:
    case SH_ComboBox_Popup:
      return 0;
    default:
      return QProxyStyle::styleHint(hint, option, widget, more);
  }
}

QIcon CalmStyle::standardIcon(StandardPixmap which, const QStyleOption* option,
                              const QWidget* widget) const {
  switch (which) {
    case SP_TitleBarCloseButton:
    case SP_DockWidgetCloseButton:
    case SP_LineEditClearButton:
      return Icon("close");
    case SP_TitleBarNormalButton:
      return Icon("float");
    case SP_MessageBoxInformation:
      return Icon("about");
    case SP_MessageBoxQuestion:
      return Icon("question");
    case SP_MessageBoxWarning:
    case SP_MessageBoxCritical:
      return Icon("warning");
    default:
      return QProxyStyle::standardIcon(which, option, widget);
  }
}

}  // namespace desktop
