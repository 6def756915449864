#include "program/desktop/menus/StatesMenu.h"

#include <QStatusBar>
#include <algorithm>

#include "engine/import/ImportedStates.h"
#include "program/desktop/MainWindow.h"
#include "program/desktop/Text.h"
#include "program/desktop/background/DocumentBusy.h"
#include "program/desktop/menus/Menus.h"

namespace desktop {

namespace {

constexpr const char* kPlugin = "Stagemarks";

// False where there is no such plug-in.
bool OpenDialog(MainWindow& window) {
  if (window.States().IsOpen()) return true;
  for (const engine::CommandPlugin& command : window.App().Commands()) {
    if (command.name != host::String(kPlugin)) continue;
    window.App().ExecuteCommand(command.id);
    break;
  }
  // Its list is filled by the event that the opening posts.
  window.App().DeliverEvents();
  return window.States().IsOpen();
}

void Say(MainWindow& window, const QString& text) { window.statusBar()->showMessage(text); }

}  // namespace

void LoadStagemark(MainWindow& window, const std::string& name) {
  if (IsDocumentBusy()) return;
  if (!OpenDialog(window)) return Say(window, "The plug-in Stagemarks is not loaded.");
  if (!window.States().Load(name)) Say(window, "\"" + ToQt(name) + "\" cannot be loaded now.");
}

// No round at the ends: who steps through a list with the keys wants to notice its end.
void LoadNeighbor(MainWindow& window, int way) {
  if (IsDocumentBusy()) return;
  if (!OpenDialog(window)) return Say(window, "The plug-in Stagemarks is not loaded.");
  const auto rows = window.States().Rows();
  if (rows.empty())
    return Say(window, "There are no Stagemarks yet: record one in the Stagemarks dialog.");
  const auto current = std::find_if(rows.begin(), rows.end(),
                                    [](const pictures::Mark& mark) { return mark.current; });
  const auto last = static_cast<int>(rows.size()) - 1;
  // Before anything was loaded the first press goes to an end.
  const int next = current != rows.end() ? static_cast<int>(current - rows.begin()) + way
                   : way > 0             ? 0
                                         : last;
  if (next >= 0 && next <= last)
    return LoadStagemark(window, rows[static_cast<std::size_t>(next)].name);
  Say(window, "\"" + ToQt(current->name) + "\" is the " + (way > 0 ? "last" : "first") +
                  " Stagemark of the list.");
}

// Through the plug-in's own dialog, as a person records: states that come in with a file become
// Stagemarks like any other (decision 59).
recording::RecordedStates RecordWhatCameIn(MainWindow& window) {
  host::BaseDocument* doc = host::GetActiveDocument();
  if (!doc || !engine::HasImportedStates(*doc) || !OpenDialog(window)) return {};
  // The dialog hears of the new document.
  window.App().DeliverEvents();
  for (host::GeDialog* open : engine::OpenDialogs()) {
    pictures::StagemarksDialog dialog(*open);
    if (!dialog.Fits()) continue;
    auto recorded = recording::RecordImportedStates(window.App().GetServices(), dialog, *doc);
    window.App().DeliverEvents();
    return recorded;
  }
  return {};
}

// Owned by the window and added to it, because the menu is emptied each time that it opens and the
// keys must work before.
QList<QAction*> AddStateEntries(QMenu& menu, MainWindow& window) {
  QAction* previous = AddEntry(menu, "Load &Previous Stagemark", QKeySequence("Ctrl+PgUp"),
                               [&window] { LoadNeighbor(window, -1); });
  previous->setToolTip("Load the Stagemark above the current one in the list");
  QAction* next = AddEntry(menu, "Load &Next Stagemark", QKeySequence("Ctrl+PgDown"),
                           [&window] { LoadNeighbor(window, 1); });
  next->setToolTip("Load the Stagemark below the current one in the list");
  for (QAction* action : {previous, next}) {
    action->setStatusTip(action->toolTip());
    action->setParent(&window);
  }
  window.addActions({previous, next});
  menu.setToolTipsVisible(true);
  return {previous, next};
}

}  // namespace desktop
