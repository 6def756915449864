// Three things make the look: a style that draws the controls, a palette, and a style sheet for
// what the toolkit styles by sheets only. All take their colors from the theme in use; ShowTheme
// replaces palette and sheet, and the style reads the theme whenever it draws.
#include "program/desktop/ApplicationStyle.h"

#include <QApplication>
#include <QPainter>
#include <QPalette>
#include <QProxyStyle>
#include <QStyleOption>
#include <QTabBar>
#include <QToolButton>

#include "program/desktop/Icons.h"

namespace desktop {

namespace {

constexpr double kRound = 4;

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

// Half a pixel inwards: a line of width 1 lies on pixels, not between them.
void DrawBox(QPainter& painter, const QRect& rect, QRgb ground, QRgb edge, double round = kRound) {
  SoftPainter soft(painter);
  soft->setPen(QColor(edge));
  soft->setBrush(QColor(ground));
  soft->drawRoundedRect(QRectF(rect).adjusted(0.5, 0.5, -0.5, -0.5), round, round);
}

QRgb EdgeOf(const QStyleOption& option) {
  return Is(option, QStyle::State_Enabled | QStyle::State_HasFocus) ? PresentTheme().accent
                                                                    : PresentTheme().edge;
}

// Draws the box of a field to type into or to choose from.
void DrawField(QPainter& painter, const QStyleOption& option, bool isButton) {
  const bool enabled = Is(option, QStyle::State_Enabled);
  const bool lit = enabled && Is(option, QStyle::State_MouseOver);
  const QRgb button = !enabled ? PresentTheme().window
                      : lit    ? PresentTheme().litButton
                               : PresentTheme().button;
  DrawBox(painter, option.rect,
          isButton  ? button
          : enabled ? PresentTheme().field
                    : PresentTheme().window,
          EdgeOf(option));
}

// Points down at 0 quarter turns, then left, up and right.
void DrawChevron(QPainter& painter, const QRect& rect, int quarterTurns, bool enabled) {
  constexpr double kHalfWidth = 3.2;
  SoftPainter soft(painter);
  soft->setPen(QPen(QColor(enabled ? PresentTheme().quiet : PresentTheme().faintMark), 1.4,
                    Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  soft->translate(QRectF(rect).center());
  soft->rotate(90.0 * quarterTurns);
  soft->drawPolyline(QPolygonF(
      {{-kHalfWidth, -kHalfWidth / 2}, {0, kHalfWidth / 2}, {kHalfWidth, -kHalfWidth / 2}}));
}

// In shares of the box, so that it fits any size that a font asks for.
void DrawTick(QPainter& painter, const QRectF& box, QRgb color) {
  SoftPainter soft(painter);
  soft->setPen(QPen(QColor(color), 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  soft->drawPolyline(QPolygonF({At(box, 0.24, 0.52), At(box, 0.42, 0.72), At(box, 0.77, 0.3)}));
}

void DrawCheckBox(QPainter& painter, const QStyleOption& option) {
  const bool enabled = Is(option, QStyle::State_Enabled);
  const bool lit = enabled && (option.state & (QStyle::State_MouseOver | QStyle::State_HasFocus));
  DrawBox(painter, option.rect, PresentTheme().field,
          lit       ? PresentTheme().accent
          : enabled ? PresentTheme().idleBox
                    : PresentTheme().edge,
          2.5);
  const QRectF box(option.rect);
  const QRgb mark = enabled ? PresentTheme().accent : PresentTheme().faint;
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
  DrawBox(painter, option.rect, PresentTheme().field,
          lit       ? PresentTheme().accent
          : enabled ? PresentTheme().idleBox
                    : PresentTheme().edge,
          side / 2.0);
  if (!Is(option, QStyle::State_On)) return;
  SoftPainter soft(painter);
  soft->setPen(Qt::NoPen);
  soft->setBrush(QColor(enabled ? PresentTheme().accent : PresentTheme().faint));
  soft->drawEllipse(QRectF(option.rect).center(), side * 0.24, side * 0.24);
}

void DrawRing(QPainter& painter, const QRect& rect) {
  SoftPainter soft(painter);
  soft->setPen(QColor(PresentTheme().accent));
  soft->drawRoundedRect(QRectF(rect).adjusted(0.5, 0.5, -0.5, -0.5), kRound, kRound);
}

// Where something dragged would go: a line between two rows, with a ring where it begins, or a
// frame around a row.
void DrawDropPlace(QPainter& painter, const QRect& rect) {
  constexpr double kRing = 3;
  if (rect.isNull()) return;
  SoftPainter soft(painter);
  soft->setPen(QPen(QColor(PresentTheme().accent), 2));
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
  // One pixel down or right: the middle of an even number of pixels lies between two.
  const QRect line = flat ? QRect(groove.left(), middle.y() - kLine / 2 + 1, groove.width(), kLine)
                          : QRect(middle.x() - kLine / 2 + 1, groove.top(), kLine, groove.height());
  DrawBox(painter, line, PresentTheme().field, PresentTheme().edge, kLine / 2.0);
  SoftPainter soft(painter);
  soft->setPen(QPen(QColor(lit ? PresentTheme().accent : PresentTheme().edge), 1.4));
  soft->setBrush(QColor(enabled ? PresentTheme().quiet : PresentTheme().edge));
  soft->drawEllipse(QRectF(handle).center(), kKnob, kKnob);
}

void DrawToolButton(QPainter& painter, const QStyleOption& option) {
  const bool pressed = option.state & (QStyle::State_Sunken | QStyle::State_On);
  const bool lit = Is(option, QStyle::State_Enabled | QStyle::State_MouseOver);
  if (!pressed && !lit) return;
  const QRgb ground = pressed ? PresentTheme().selected : PresentTheme().litButton;
  DrawBox(painter, option.rect, ground, ground);
}

void DrawSplitter(QPainter& painter, const QStyleOption& option) {
  painter.fillRect(option.rect, QColor(Is(option, QStyle::State_MouseOver) ? PresentTheme().accent
                                                                           : PresentTheme().field));
}

void DrawHeader(QPainter& painter, const QStyleOption& option) {
  painter.fillRect(option.rect, QColor(PresentTheme().bar));
  painter.setPen(QColor(PresentTheme().button));
  painter.drawLine(option.rect.bottomLeft(), option.rect.bottomRight());
}

// Only for a bar with a range.
void DrawProgress(QPainter& painter, const QStyleOptionProgressBar& bar) {
  DrawBox(painter, bar.rect, PresentTheme().field, PresentTheme().edge);
  const double whole = static_cast<double>(bar.maximum) - bar.minimum;
  QRect done = bar.rect.adjusted(2, 2, -2, -2);
  done.setWidth(static_cast<int>(done.width() * ((bar.progress - bar.minimum) / whole)));
  const QRgb color = Is(bar, QStyle::State_Enabled) ? PresentTheme().accent : PresentTheme().edge;
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

void DrawTabClose(QPainter& painter, const QStyleOption& option) {
  if (Is(option, QStyle::State_MouseOver))
    DrawBox(painter, option.rect, PresentTheme().litButton, PresentTheme().litButton);
  Icon("close").paint(&painter, option.rect.adjusted(2, 2, -2, -2));
}

// Everything but tool buttons and tabs shows the focus in its own edge.
void DrawFocus(QPainter& painter, const QStyleOption& option, const QWidget* widget) {
  if (qobject_cast<const QToolButton*>(widget) || qobject_cast<const QTabBar*>(widget))
    DrawRing(painter, option.rect);
}

bool HasFrame(const QStyleOption& option) {
  const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(&option);
  return frame && frame->lineWidth > 0;
}

// The controls are drawn flat, with thin edges, and an edge of the accent color around what has the
// keyboard focus. Everything else is the toolkit's Fusion style.
class ApplicationStyle : public QProxyStyle {
 public:
  ApplicationStyle() : QProxyStyle("Fusion") {}

  void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
  void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                   const QWidget* widget) const override;
  void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                          QPainter* painter, const QWidget* widget) const override;
  QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                         const QWidget* widget) const override;
  QRect subElementRect(SubElement element, const QStyleOption* option,
                       const QWidget* widget) const override;
  int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                QStyleHintReturn* more) const override;
  // Those of our family in place of the toolkit's.
  QIcon standardIcon(StandardPixmap which, const QStyleOption* option,
                     const QWidget* widget) const override;
};

}  // namespace

void ApplicationStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option,
                                     QPainter* painter, const QWidget* widget) const {
  switch (element) {
    case PE_IndicatorCheckBox:
    case PE_IndicatorItemViewItemCheck:
      return DrawCheckBox(*painter, *option);
    case PE_IndicatorTabClose:
      return DrawTabClose(*painter, *option);
    case PE_IndicatorMenuCheckMark:
      return DrawTick(*painter, option->rect,
                      Is(*option, State_Enabled) ? PresentTheme().accent : PresentTheme().faint);
    case PE_IndicatorRadioButton:
      return DrawRadioButton(*painter, *option);
    case PE_FrameFocusRect:
      return DrawFocus(*painter, *option, widget);
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
      if (HasFrame(*option)) return DrawField(*painter, *option, false);
      break;
    default:
      break;
  }
  QProxyStyle::drawPrimitive(element, option, painter, widget);
}

void ApplicationStyle::drawControl(ControlElement element, const QStyleOption* option,
                                   QPainter* painter, const QWidget* widget) const {
  switch (element) {
    case CE_HeaderSection:
    case CE_HeaderEmptyArea:
      return DrawHeader(*painter, *option);
    case CE_Splitter:
      return DrawSplitter(*painter, *option);
    // Drawn with the contents.
    case CE_ProgressBarGroove:
      return;
    // A bar without a range is left to the toolkit, which animates it.
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

void ApplicationStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
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

// All fields get one height, so that they align where they stand side by side.
QSize ApplicationStyle::sizeFromContents(ContentsType type, const QStyleOption* option,
                                         const QSize& size, const QWidget* widget) const {
  constexpr int kAroundText = 10;
  QSize wanted = QProxyStyle::sizeFromContents(type, option, size, widget);
  if (type == CT_ComboBox || type == CT_SpinBox || type == CT_LineEdit) {
    wanted.setHeight(std::max(wanted.height(), option->fontMetrics.height() + kAroundText));
  }
  return wanted;
}

QRect ApplicationStyle::subElementRect(SubElement element, const QStyleOption* option,
                                       const QWidget* widget) const {
  constexpr int kBesideText = 4;
  const QRect rect = QProxyStyle::subElementRect(element, option, widget);
  const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
  const bool isField = element == SE_LineEditContents && frame && frame->lineWidth > 0;
  return isField ? rect.adjusted(kBesideText, 0, -kBesideText, 0) : rect;
}

// Buttons of boxes without icons; the list of a combo box below it instead of over it.
int ApplicationStyle::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                                QStyleHintReturn* more) const {
  switch (hint) {
    case SH_DialogButtonBox_ButtonsHaveIcons:
    case SH_ComboBox_Popup:
      return 0;
    default:
      return QProxyStyle::styleHint(hint, option, widget, more);
  }
}

QIcon ApplicationStyle::standardIcon(StandardPixmap which, const QStyleOption* option,
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

namespace {

QPalette PaletteOf(const Theme& theme) {
  QPalette palette{QColor(theme.button), QColor(theme.window)};
  for (const auto role :
       {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText}) {
    palette.setColor(role, QColor(theme.text));
    palette.setColor(QPalette::Disabled, role, QColor(theme.faint));
  }
  palette.setColor(QPalette::Base, QColor(theme.field));
  palette.setColor(QPalette::Disabled, QPalette::Base, QColor(theme.window));
  palette.setColor(QPalette::AlternateBase, QColor(theme.otherLine));
  palette.setColor(QPalette::ToolTipBase, QColor(theme.button));
  palette.setColor(QPalette::PlaceholderText, QColor(theme.faint));
  palette.setColor(QPalette::Mid, QColor(theme.edge));
  palette.setColor(QPalette::Highlight, QColor(theme.selected));
  palette.setColor(QPalette::HighlightedText, QColor(theme.selectedText));
  palette.setColor(QPalette::Link, QColor(theme.accent));
  return palette;
}

// A color of the theme stands as "@" and its name. Only for what a style cannot draw alone. Once a
// widget has a rule here the toolkit draws all of it from the sheet and asks the style no more, so
// fields are left out.
const char* const kStyleSheet = R"(
  QMainWindow::separator { background: @gap; width: 4px; height: 4px; }
  QMainWindow::separator:hover { background: @accent; }
  QMenuBar { background: @menu; padding: 1px; }
  QMenuBar::item { padding: 4px 9px; background: transparent; border-radius: 3px; }
  QMenuBar::item:selected { background: @litButton; }
  QMenu { background: @menu; border: 1px solid @edge; padding: 4px; }
  QMenu::item { padding: 4px 26px 4px 8px; border-radius: 3px; }
  QMenu::icon { padding-left: 6px; }
  QMenu::indicator { width: 13px; height: 13px; left: 6px; }
  QMenu::item:selected { background: @selected; }
  QMenu::item:disabled { color: @faint; }
  QMenu::separator { height: 1px; background: @litButton; margin: 4px 8px; }
  QDockWidget::title { background: @bar; padding: 5px 8px; }
  QDockWidget::close-button, QDockWidget::float-button { border: none; border-radius: 3px; padding: 1px; }
  QDockWidget::close-button:hover, QDockWidget::float-button:hover { background: @litButton; }
  QPushButton { background: @button; border: 1px solid @edge; border-radius: 4px; padding: 5px 12px; }
  QPushButton:hover { background: @litButton; }
  QPushButton:pressed { background: @pressedButton; }
  QPushButton:default { border-color: @calmAccent; }
  QPushButton:focus { border-color: @accent; }
  QPushButton:disabled { color: @faint; background: @menu; border-color: @button; }
  QTreeView, QListView, QTableView { border: 1px solid @button; border-radius: 4px; outline: none; }
  QTreeView:focus, QListView:focus, QTableView:focus { border-color: @calmAccent; }
  QTreeView::item { padding: 3px 2px; }
  QComboBox QAbstractItemView { background: @menu; border: 1px solid @edge; padding: 3px; border-radius: 0; }
  QComboBox QAbstractItemView::item { padding: 4px 6px; min-height: 18px; }
  QScrollBar { background: @bar; }
  QScrollBar:vertical { width: 11px; }
  QScrollBar:horizontal { height: 11px; }
  QScrollBar::handle { background: @edge; border-radius: 3px; margin: 2px; }
  QScrollBar::handle:vertical { min-height: 28px; }
  QScrollBar::handle:horizontal { min-width: 28px; }
  QScrollBar::handle:hover, QScrollBar::handle:pressed { background: @idleBox; }
  QScrollBar::add-line, QScrollBar::sub-line { width: 0; height: 0; }
  QScrollBar::add-page, QScrollBar::sub-page { background: none; }
  QTabBar { background: @bar; }
  QTabBar::tab { background: @bar; color: @quiet; padding: 5px 14px; border: none; }
  QTabBar::tab:hover { color: @text; background: @menu; }
  QTabBar::tab:selected { color: @text; background: @window; }
  QTabBar::tab:top { border-bottom: 2px solid transparent; }
  QTabBar::tab:bottom { border-top: 2px solid transparent; }
  QTabBar::tab:top:selected { border-bottom: 2px solid @accent; }
  QTabBar::tab:bottom:selected { border-top: 2px solid @accent; }
  QTabWidget::pane { border: none; }
  QToolButton#fold { background: @button; border: none; border-radius: 3px; padding: 3px 4px; font-weight: bold; }
  QToolButton#fold:hover, QToolButton#fold:focus { background: @litButton; }
  QToolBar { background: @window; border: none; padding: 2px 4px; spacing: 2px; }
  QFrame[frameShape="5"] { color: @litButton; }
  QStatusBar { background: @bar; color: @quiet; }
  QStatusBar::item { border: none; }
  QToolTip { background: @button; color: @text; border: 1px solid @edge; padding: 3px; }
)";

struct NamedColor {
  const char* name;
  QRgb Theme::*color;
};

// A name that begins with another one stands before it.
constexpr NamedColor kNamed[] = {
    {"@selected", &Theme::selected},
    {"@litButton", &Theme::litButton},
    {"@pressedButton", &Theme::pressedButton},
    {"@button", &Theme::button},
    {"@calmAccent", &Theme::calmAccent},
    {"@accent", &Theme::accent},
    {"@window", &Theme::window},
    {"@idleBox", &Theme::idleBox},
    {"@gap", &Theme::gap},
    {"@menu", &Theme::menu},
    {"@edge", &Theme::edge},
    {"@faint", &Theme::faint},
    {"@quiet", &Theme::quiet},
    {"@text", &Theme::text},
    {"@bar", &Theme::bar},
};

// Replaced in the order of the table, longer names first where one begins with another.
QString SheetOf(const Theme& theme) {
  QString sheet = kStyleSheet;
  for (const NamedColor& row : kNamed) sheet.replace(row.name, QColor(theme.*row.color).name());
  return sheet;
}

}  // namespace

void ApplyTheme(QApplication&) {
  static QStyle* const style = new ApplicationStyle;  // the application owns it from here on
  QApplication::setStyle(style);
  ShowTheme(DarkTheme());
}

// A new sheet has every widget laid out again, so the look in use is not set twice.
void ShowTheme(const Theme& theme) {
  if (&PresentTheme() == &theme && !qApp->styleSheet().isEmpty()) return;
  UseTheme(theme);
  QApplication::setPalette(PaletteOf(theme));
  qApp->setStyleSheet(SheetOf(theme));
}

}  // namespace desktop
