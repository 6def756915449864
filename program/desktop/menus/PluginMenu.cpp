#include "program/desktop/MainWindow.h"
#include "program/desktop/Text.h"
#include "program/desktop/menus/Menus.h"

namespace desktop {

namespace {

void FillPluginMenu(QMenu& menu, engine::Application& application) {
  menu.clear();
  for (const engine::CommandPlugin& command : application.Commands()) {
    QAction* action = AddEntry(menu, Label(host::String(command.name)), {},
                               [&application, id = command.id] { application.ExecuteCommand(id); });
    action->setStatusTip(ToQt(command.help));
  }
  if (menu.isEmpty()) menu.addAction("No plug-ins loaded")->setEnabled(false);
}

}  // namespace

void BuildPluginMenu(QMenu& menu, MainWindow& window) {
  QObject::connect(&menu, &QMenu::aboutToShow, &menu,
                   [&menu, &window] { FillPluginMenu(menu, window.App()); });
}

}  // namespace desktop
