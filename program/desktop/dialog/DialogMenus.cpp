#include "program/desktop/dialog/DialogMenus.h"

#include <QMenuBar>

#include "program/desktop/Text.h"
#include "program/desktop/dialog/Busy.h"

namespace desktop {

namespace {

void ShowState(QAction& action, const engine::MenuEntry& entry) {
  action.setEnabled(entry.enabled);
  action.setCheckable(entry.checked);
  action.setChecked(entry.checked);
}

void AddEntries(QMenu& menu, const std::vector<engine::MenuEntry>& entries,
                const SharedDialogLink& link);

void AddEntry(QMenu& menu, const engine::MenuEntry& entry, const SharedDialogLink& link) {
  if (entry.separator) {
    menu.addSeparator();
  } else if (entry.id == 0) {
    AddEntries(*menu.addMenu(Label(entry.text)), entry.children, link);
  } else {
    QAction* action = menu.addAction(Label(entry.text));
    action->setData(entry.id);
    ShowState(*action, entry);
    QObject::connect(action, &QAction::triggered, action,
                     [link, action, id = entry.id, label = entry.text] {
                       Act(link, *action, label, About::kNothingMore,
                           [id](host::GeDialog& dialog) { return engine::ChooseMenu(dialog, id); });
                     });
  }
}

// The toolkit flips a check mark by itself when its entry is chosen; the dialog alone says what is
// marked.
void RefreshStates(const QMenu& menu, const SharedDialogLink& link) {
  for (QAction* action : menu.actions()) {
    const host::LONG id = action->data().toInt();
    const engine::MenuEntry* entry =
        id != 0 && link->dialog ? engine::FindMenuEntry(*link->dialog, id) : nullptr;
    if (entry) ShowState(*action, *entry);
  }
}

void AddEntries(QMenu& menu, const std::vector<engine::MenuEntry>& entries,
                const SharedDialogLink& link) {
  for (const engine::MenuEntry& entry : entries) AddEntry(menu, entry, link);
  QObject::connect(&menu, &QMenu::aboutToShow, &menu, [&menu, link] { RefreshStates(menu, link); });
}

}  // namespace

void ShowMenus(QMenuBar& bar, const SharedDialogLink& link) {
  for (QAction* action : bar.actions()) {
    if (action->menu()) action->menu()->deleteLater();
  }
  bar.clear();
  for (const engine::MenuEntry& entry : engine::DialogMenus(*link->dialog)) {
    QMenu* menu = bar.addMenu(Label(entry.text));
    AddEntries(*menu, entry.children, link);
  }
}

}  // namespace desktop
