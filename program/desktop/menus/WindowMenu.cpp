#include "program/desktop/MainWindow.h"
#include "program/desktop/Text.h"
#include "program/desktop/menus/Menus.h"

namespace desktop {

namespace {

void ListDocuments(QMenu& menu, const engine::Application& application) {
  for (host::BaseDocument* doc : application.Documents()) {
    QAction* action = AddEntry(menu, Label(ToHost(DocumentTitle(*doc))), {}, [doc] {
      host::SetActiveDocument(doc);
      host::EventAdd();
    });
    action->setCheckable(true);
    action->setChecked(doc == host::GetActiveDocument());
  }
}

void FillWindowMenu(QMenu& menu, MainWindow& window) {
  menu.clear();
  ListDocuments(menu, window.App());
  menu.addSeparator();
  for (QAction* action : window.Panels().ToggleActions()) menu.addAction(action);
  menu.addSeparator();
  AddEntry(menu, "&Reset Layout", {}, [&window] { window.ResetLayout(); });
}

}  // namespace

void BuildWindowMenu(QMenu& menu, MainWindow& window) {
  QObject::connect(&menu, &QMenu::aboutToShow, &menu, [&menu, &window] { FillWindowMenu(menu, window); });
}

}  // namespace desktop
