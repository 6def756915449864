#include <QApplication>
#include <QMessageBox>

#include "program/desktop/MainWindow.h"
#include "program/desktop/menus/Menus.h"

namespace desktop {

namespace {

void ShowAbout(MainWindow& window) {
  QMessageBox::about(
      &window, "About " + QApplication::applicationDisplayName(),
      QString("<b>%1 %2</b><p>Records the states of a 3D scene under names, recalls, compares and exports them.</p>")
          .arg(QApplication::applicationDisplayName(), QApplication::applicationVersion()));
}

}  // namespace

void BuildHelpMenu(QMenu& menu, MainWindow& window) {
  AddEntry(menu, "&About", {}, [&window] { ShowAbout(window); });
}

}  // namespace desktop
