#include <algorithm>

#include "program/desktop/MainWindow.h"
#include "program/desktop/Text.h"
#include "program/desktop/menus/Menus.h"
#include "program/desktop/panels/FocusTurn.h"

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

// Closed ones are opened by the command that opened them before.
void ListDialogs(QMenu& menu, MainWindow& window) {
  for (const DialogDocks::Known& known : window.Docks().AllKnown()) {
    if (known.title.isEmpty()) continue;
    QAction* action =
        AddEntry(menu, Label(ToHost(known.title)), {},
                 [&window, plugin = known.plugin, dialog = known.dialog] {
                   const auto open = engine::OpenDialogs();
                   const bool isOpen = std::find(open.begin(), open.end(), dialog) != open.end();
                   isOpen ? void(dialog->Close()) : void(window.App().ExecuteCommand(plugin));
                 });
    action->setCheckable(true);
    action->setChecked(known.dialog != nullptr);
  }
}

void FillWindowMenu(QMenu& menu, MainWindow& window, const QList<QAction*>& turns) {
  menu.clear();
  menu.addActions(turns);
  menu.addSeparator();
  ListDocuments(menu, window.App());
  menu.addSeparator();
  for (QAction* action : window.Panels().ToggleActions()) menu.addAction(action);
  ListDialogs(menu, window);
  menu.addSeparator();
  AddEntry(menu, "&Reset Layout", {}, [&window] { window.ResetLayout(); });
}

}  // namespace

// The keys work without the menu ever being opened.
void BuildWindowMenu(QMenu& menu, MainWindow& window) {
  DocumentTabs& tabs = window.Tabs();
  const QList<QAction*> turns = {
      AddEntry(menu, "&Next Scene", QKeySequence("Ctrl+Tab"), [&tabs] { tabs.Turn(1); }),
      AddEntry(menu, "&Previous Scene", QKeySequence("Ctrl+Shift+Tab"), [&tabs] { tabs.Turn(-1); }),
      AddEntry(menu, "Next Pa&nel", QKeySequence("F6"), [&window] { TurnFocus(window, 1); }),
      AddEntry(menu, "Previous Pane&l", QKeySequence("Shift+F6"),
               [&window] { TurnFocus(window, -1); })};
  for (QAction* turn : turns) turn->setParent(&window);
  window.addActions(turns);
  QObject::connect(&menu, &QMenu::aboutToShow, &menu,
                   [&menu, &window, turns] { FillWindowMenu(menu, window, turns); });
}

}  // namespace desktop
