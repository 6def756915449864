#include "program/desktop/Theme.h"

#include <QApplication>
#include <QPainter>
#include <QPalette>
#include <QProxyStyle>
#include <QStyleOption>

namespace desktop {

namespace {

constexpr QRgb kWindow = 0xff2b2b2b;
constexpr QRgb kField = 0xff202020;
constexpr QRgb kOtherLine = 0xff242424;
constexpr QRgb kButton = 0xff3a3a3a;
constexpr QRgb kEdge = 0xff4a4a4a;
constexpr QRgb kIdleBox = 0xff6a6a6a;
constexpr QRgb kText = 0xffdcdcdc;
constexpr QRgb kFaint = 0xff858585;
constexpr QRgb kAccent = 0xffc98a3d;
constexpr QRgb kSelected = 0xff5d4a30;

QPalette DarkPalette() {
  QPalette palette{QColor(kButton), QColor(kWindow)};
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText}) {
    palette.setColor(role, QColor(kText));
    palette.setColor(QPalette::Disabled, role, QColor(kFaint));
  }
  palette.setColor(QPalette::Base, QColor(kField));
  palette.setColor(QPalette::AlternateBase, QColor(kOtherLine));
  palette.setColor(QPalette::ToolTipBase, QColor(kButton));
  palette.setColor(QPalette::PlaceholderText, QColor(kFaint));
  palette.setColor(QPalette::Mid, QColor(kEdge));
  palette.setColor(QPalette::Highlight, QColor(kSelected));
  palette.setColor(QPalette::HighlightedText, QColor(0xffffffff));
  palette.setColor(QPalette::Link, QColor(kAccent));
  return palette;
}

// Fusion with check boxes that stand out from a dark list.
class CalmStyle : public QProxyStyle {
 public:
  CalmStyle() : QProxyStyle("Fusion") {}

  void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override {
    if (element == PE_IndicatorCheckBox || element == PE_IndicatorItemViewItemCheck) {
      DrawCheckBox(*option, *painter);
    } else {
      QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
  }

  int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget, QStyleHintReturn* more) const override {
    // The icons that come with the toolkit are of another family.
    return hint == SH_DialogButtonBox_ButtonsHaveIcons ? 0 : QProxyStyle::styleHint(hint, option, widget, more);
  }

 private:
  static void DrawCheckBox(const QStyleOption& option, QPainter& painter) {
    const bool enabled = option.state & State_Enabled;
    const bool lit = enabled && (option.state & (State_MouseOver | State_HasFocus));
    const QRectF box = QRectF(option.rect).adjusted(0.5, 0.5, -0.5, -0.5);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QColor(lit ? kAccent : kIdleBox));
    painter.setBrush(QColor(kField));
    painter.drawRoundedRect(box, 2.5, 2.5);
    painter.setPen(QPen(QColor(enabled ? kAccent : kFaint), 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    const auto at = [&box](double x, double y) { return QPointF(box.left() + x * box.width(), box.top() + y * box.height()); };
    if (option.state & State_On) painter.drawPolyline(QPolygonF({at(0.22, 0.52), at(0.42, 0.74), at(0.8, 0.28)}));
    if (option.state & State_NoChange) painter.drawLine(at(0.28, 0.5), at(0.72, 0.5));
    painter.restore();
  }
};

const char* const kStyleSheet = R"(
  QMainWindow::separator { background: #1c1c1c; width: 4px; height: 4px; }
  QMainWindow::separator:hover { background: #c98a3d; }
  QMenuBar { background: #303030; padding: 1px; }
  QMenuBar::item { padding: 4px 9px; background: transparent; border-radius: 3px; }
  QMenuBar::item:selected { background: #454545; }
  QMenu { background: #303030; border: 1px solid #4a4a4a; padding: 4px; }
  QMenu::item { padding: 4px 26px 4px 24px; border-radius: 3px; }
  QMenu::item:selected { background: #5d4a30; }
  QMenu::item:disabled { color: #858585; }
  QMenu::separator { height: 1px; background: #454545; margin: 4px 8px; }
  QDockWidget::title { background: #242424; padding: 5px 8px; }
  QPushButton { background: #3a3a3a; border: 1px solid #4a4a4a; border-radius: 4px; padding: 5px 12px; }
  QPushButton:hover { background: #454545; }
  QPushButton:pressed { background: #2f2f2f; }
  QPushButton:focus, QLineEdit:focus, QTreeView:focus { border-color: #c98a3d; }
  QPushButton:default { border-color: #8a6433; }
  QPushButton:disabled { color: #858585; background: #303030; }
  QLineEdit { background: #202020; border: 1px solid #4a4a4a; border-radius: 4px; padding: 4px 6px; }
  QTreeView { border: 1px solid #4a4a4a; border-radius: 4px; outline: none; }
  QTreeView::item { padding: 3px 2px; }
  QFrame[frameShape="5"] { color: #454545; }
  QStatusBar { background: #242424; color: #b4b4b4; }
  QToolTip { background: #3a3a3a; color: #dcdcdc; border: 1px solid #4a4a4a; padding: 3px; }
)";

}  // namespace

void ApplyTheme(QApplication& application) {
  QApplication::setStyle(new CalmStyle);
  QApplication::setPalette(DarkPalette());
  application.setStyleSheet(kStyleSheet);
}

}  // namespace desktop
