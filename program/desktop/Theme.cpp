#include "program/desktop/Theme.h"

#include <QApplication>
#include <QPalette>

#include "program/desktop/CalmStyle.h"

namespace desktop {

namespace {

QPalette PaletteOf(const Look& look) {
  QPalette palette{QColor(look.button), QColor(look.window)};
  for (const auto role :
       {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText}) {
    palette.setColor(role, QColor(look.text));
    palette.setColor(QPalette::Disabled, role, QColor(look.faint));
  }
  palette.setColor(QPalette::Base, QColor(look.field));
  palette.setColor(QPalette::Disabled, QPalette::Base, QColor(look.window));
  palette.setColor(QPalette::AlternateBase, QColor(look.otherLine));
  palette.setColor(QPalette::ToolTipBase, QColor(look.button));
  palette.setColor(QPalette::PlaceholderText, QColor(look.faint));
  palette.setColor(QPalette::Mid, QColor(look.edge));
  palette.setColor(QPalette::Highlight, QColor(look.selected));
  palette.setColor(QPalette::HighlightedText, QColor(look.selectedText));
  palette.setColor(QPalette::Link, QColor(look.accent));
  return palette;
}

// A color of the look stands as "@" and its name.
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
  QRgb Look::*color;
};

// A name that begins with another one stands before it.
constexpr NamedColor kNamed[] = {
    {"@selected", &Look::selected},
    {"@litButton", &Look::litButton},
    {"@pressedButton", &Look::pressedButton},
    {"@button", &Look::button},
    {"@calmAccent", &Look::calmAccent},
    {"@accent", &Look::accent},
    {"@window", &Look::window},
    {"@idleBox", &Look::idleBox},
    {"@gap", &Look::gap},
    {"@menu", &Look::menu},
    {"@edge", &Look::edge},
    {"@faint", &Look::faint},
    {"@quiet", &Look::quiet},
    {"@text", &Look::text},
    {"@bar", &Look::bar},
};

QString SheetOf(const Look& look) {
  QString sheet = kStyleSheet;
  for (const NamedColor& row : kNamed) sheet.replace(row.name, QColor(look.*row.color).name());
  return sheet;
}

}  // namespace

void ApplyTheme(QApplication&) {
  QApplication::setStyle(new CalmStyle);
  ShowLook(DarkLook());
}

void ShowLook(const Look& look) {
  if (&PresentLook() == &look && !qApp->styleSheet().isEmpty()) return;
  UseLook(look);
  QApplication::setPalette(PaletteOf(look));
  qApp->setStyleSheet(SheetOf(look));
}

}  // namespace desktop
