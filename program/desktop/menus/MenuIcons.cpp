#include "program/desktop/menus/MenuIcons.h"

#include <QMenu>

#include "program/desktop/Icons.h"

namespace desktop {

namespace {

QString Plain(QString text) { return text.remove('&'); }

}  // namespace

const std::vector<MenuIcon>& MenuIcons() {
  static const auto* const icons = new std::vector<MenuIcon>{
      {"File", "New", "new"},          {"File", "Open...", "open"},
      {"File", "Import...", "import"}, {"File", "Save", "save"},
      {"Edit", "Undo", "undo"},        {"Edit", "Redo", "redo"},
      {"Edit", "Delete", "delete"},    {"Edit", "Duplicate", "duplicate"},
      {"View", "Frame All", "frame"},  {"Help", "About", "about"},
  };
  return *icons;
}

void PutIcons(const QMenuBar& bar) {
  for (const QAction* top : bar.actions()) {
    for (QAction* entry : top->menu()->actions()) {
      for (const MenuIcon& row : MenuIcons()) {
        const bool isIt = Plain(top->text()) == row.menu && Plain(entry->text()) == row.entry;
        if (isIt && entry->icon().isNull()) entry->setIcon(Icon(row.icon));
      }
    }
  }
}

}  // namespace desktop
