#include "program/desktop/Theme.h"

#include <QApplication>
#include <QPalette>

#include "program/desktop/CalmStyle.h"
#include "program/desktop/Colors.h"

namespace desktop {

namespace {

using namespace colors;

QPalette DarkPalette() {
  QPalette palette{QColor(kButton), QColor(kWindow)};
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText}) {
    palette.setColor(role, QColor(kText));
    palette.setColor(QPalette::Disabled, role, QColor(kFaint));
  }
  palette.setColor(QPalette::Base, QColor(kField));
  palette.setColor(QPalette::Disabled, QPalette::Base, QColor(kWindow));
  palette.setColor(QPalette::AlternateBase, QColor(kOtherLine));
  palette.setColor(QPalette::ToolTipBase, QColor(kButton));
  palette.setColor(QPalette::PlaceholderText, QColor(kFaint));
  palette.setColor(QPalette::Mid, QColor(kEdge));
  palette.setColor(QPalette::Highlight, QColor(kSelected));
  palette.setColor(QPalette::HighlightedText, QColor(0xffffffff));
  palette.setColor(QPalette::Link, QColor(kAccent));
  return palette;
}

const char* const kStyleSheet = R"(
  QMainWindow::separator { background: #1c1c1c; width: 4px; height: 4px; }
  QMainWindow::separator:hover { background: #c98a3d; }
  QMenuBar { background: #303030; padding: 1px; }
  QMenuBar::item { padding: 4px 9px; background: transparent; border-radius: 3px; }
  QMenuBar::item:selected { background: #454545; }
  QMenu { background: #303030; border: 1px solid #4a4a4a; padding: 4px; }
  QMenu::item { padding: 4px 26px 4px 8px; border-radius: 3px; }
  QMenu::icon { padding-left: 6px; }
  QMenu::indicator { width: 13px; height: 13px; left: 6px; }
  QMenu::item:selected { background: #5d4a30; }
  QMenu::item:disabled { color: #858585; }
  QMenu::separator { height: 1px; background: #454545; margin: 4px 8px; }
  QDockWidget::title { background: #242424; padding: 5px 8px; }
  QDockWidget::close-button, QDockWidget::float-button { border: none; border-radius: 3px; padding: 1px; }
  QDockWidget::close-button:hover, QDockWidget::float-button:hover { background: #454545; }
  QPushButton { background: #3a3a3a; border: 1px solid #4a4a4a; border-radius: 4px; padding: 5px 12px; }
  QPushButton:hover { background: #454545; }
  QPushButton:pressed { background: #2f2f2f; }
  QPushButton:default { border-color: #8a6433; }
  QPushButton:focus { border-color: #c98a3d; }
  QPushButton:disabled { color: #858585; background: #303030; border-color: #3a3a3a; }
  QTreeView, QListView, QTableView { border: 1px solid #3a3a3a; border-radius: 4px; outline: none; }
  QTreeView:focus, QListView:focus, QTableView:focus { border-color: #8a6433; }
  QTreeView::item { padding: 3px 2px; }
  QComboBox QAbstractItemView { background: #303030; border: 1px solid #4a4a4a; padding: 3px; border-radius: 0; }
  QComboBox QAbstractItemView::item { padding: 4px 6px; min-height: 18px; }
  QScrollBar { background: #242424; }
  QScrollBar:vertical { width: 11px; }
  QScrollBar:horizontal { height: 11px; }
  QScrollBar::handle { background: #4a4a4a; border-radius: 3px; margin: 2px; }
  QScrollBar::handle:vertical { min-height: 28px; }
  QScrollBar::handle:horizontal { min-width: 28px; }
  QScrollBar::handle:hover, QScrollBar::handle:pressed { background: #6a6a6a; }
  QScrollBar::add-line, QScrollBar::sub-line { width: 0; height: 0; }
  QScrollBar::add-page, QScrollBar::sub-page { background: none; }
  QTabBar { background: #242424; }
  QTabBar::tab { background: #242424; color: #a0a0a0; padding: 5px 14px; border: none; }
  QTabBar::tab:hover { color: #dcdcdc; background: #303030; }
  QTabBar::tab:selected { color: #dcdcdc; background: #2b2b2b; }
  QTabBar::tab:top { border-bottom: 2px solid transparent; }
  QTabBar::tab:bottom { border-top: 2px solid transparent; }
  QTabBar::tab:top:selected { border-bottom: 2px solid #c98a3d; }
  QTabBar::tab:bottom:selected { border-top: 2px solid #c98a3d; }
  QTabWidget::pane { border: none; }
  QToolBar { background: #2b2b2b; border: none; padding: 2px 4px; spacing: 2px; }
  QFrame[frameShape="5"] { color: #454545; }
  QStatusBar { background: #242424; color: #b4b4b4; }
  QStatusBar::item { border: none; }
  QToolTip { background: #3a3a3a; color: #dcdcdc; border: 1px solid #4a4a4a; padding: 3px; }
)";

}  // namespace

void ApplyTheme(QApplication& application) {
  QApplication::setStyle(new CalmStyle);
  QApplication::setPalette(DarkPalette());
  application.setStyleSheet(kStyleSheet);
}

}  // namespace desktop
