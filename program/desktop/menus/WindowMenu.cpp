#include <QApplication>
#include <QDockWidget>
#include <algorithm>

#include "program/desktop/MainWindow.h"
#include "program/desktop/Text.h"
#include "program/desktop/menus/Menus.h"

namespace desktop {

namespace {

// Without a focus proxy: then another widget in it is the one.
bool TakesFocus(const QWidget& widget) {
  return widget.focusPolicy() & Qt::TabFocus && widget.isVisible() && widget.isEnabled() &&
         !widget.focusProxy();
}

// The focus proxy of the panel, else the first widget of the tab order in it; null where nothing
// takes it.
QWidget* FirstIn(QWidget& panel) {
  QWidget* proxy = panel.focusProxy();
  if (proxy && TakesFocus(*proxy)) return proxy;
  if (TakesFocus(panel)) return &panel;
  for (QWidget* widget = panel.nextInFocusChain(); widget != &panel;
       widget = widget->nextInFocusChain()) {
    if (panel.isAncestorOf(widget) && TakesFocus(*widget)) return widget;
  }
  return nullptr;
}

// The picture is the first; what takes no focus is left out, so that no press of F6 seems to do
// nothing.
QList<QWidget*> PanelsIn(const QMainWindow& window) {
  QList<QWidget*> panels;
  for (const QDockWidget* dock : window.findChildren<QDockWidget*>()) {
    // Those behind another tab stand outside the window.
    const bool isSeen =
        dock->isVisible() && (dock->isFloating() || dock->geometry().intersects(window.rect()));
    if (isSeen && dock->widget()) panels.append(dock->widget());
  }
  // As one reads the screen, column by column, whatever was raised last.
  std::stable_sort(panels.begin(), panels.end(), [](const QWidget* a, const QWidget* b) {
    const QPoint left = a->mapToGlobal(QPoint());
    const QPoint right = b->mapToGlobal(QPoint());
    return std::pair(left.x(), left.y()) < std::pair(right.x(), right.y());
  });
  panels.prepend(window.centralWidget());
  panels.removeIf([](QWidget* panel) { return !FirstIn(*panel); });
  return panels;
}

// Gives the focus to what takes it first in the next panel, `way` 1, or in the one before, -1: the
// picture, the panels and dialogs that can be seen, and round again. From the panel that holds the
// focus; from none, to the first. A floating panel's window must be made active, too.
void FocusNextPanel(QMainWindow& window, int way) {
  const QList<QWidget*> panels = PanelsIn(window);
  const QWidget* focus = QApplication::focusWidget();
  qsizetype at = 0;
  while (at < panels.size() && !(panels[at] == focus || (focus && panels[at]->isAncestorOf(focus))))
    ++at;
  if (panels.isEmpty()) return;
  const qsizetype next = at == panels.size() ? 0 : (at + way + panels.size()) % panels.size();
  QWidget* target = FirstIn(*panels[next]);
  target->window()->activateWindow();
  target->setFocus(Qt::TabFocusReason);
}

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

// Closed ones are opened by the command that opened them before. A dialog may be destroyed while
// the menu is open: it is looked for among the open ones before it is closed.
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
      AddEntry(menu, "Next Pa&nel", QKeySequence("F6"), [&window] { FocusNextPanel(window, 1); }),
      AddEntry(menu, "Previous Pane&l", QKeySequence("Shift+F6"),
               [&window] { FocusNextPanel(window, -1); })};
  for (QAction* turn : turns) turn->setParent(&window);
  window.addActions(turns);
  QObject::connect(&menu, &QMenu::aboutToShow, &menu,
                   [&menu, &window, turns] { FillWindowMenu(menu, window, turns); });
}

}  // namespace desktop
