#include "program/desktop/menus/EditMenu.h"

#include "engine/editing/ObjectCommands.h"
#include "engine/editing/Selection.h"
#include "engine/undo/Undo.h"
#include "program/desktop/MainWindow.h"
#include "program/desktop/Text.h"
#include "program/desktop/background/SlicedEdit.h"
#include "program/desktop/menus/Menus.h"

namespace desktop {

namespace {

// "Undo" or "Undo Load".
QString NamedStep(const QString& verb, const std::string& name) {
  return name.empty() ? verb : verb + " " + Label(host::String(name));
}

}  // namespace

EditMenu::EditMenu(QMenu& menu, MainWindow& window)
    : QObject(&menu),
      window_(window),
      undo_(AddEntry(menu, "&Undo", QKeySequence::Undo,
                     [&window] { window.Reporting().Undo(window.App()); })),
      redo_(AddEntry(menu, "&Redo", QKeySequence("Ctrl+Shift+Z"),
                     [&window] { window.Reporting().Redo(window.App()); })) {
  menu.addSeparator();
  onScene_.push_back(AddCommand(menu, "Select &All", QKeySequence::SelectAll,
                                [&window](auto&) { window.Objects().selectAll(); }));
  onSelection_.push_back(
      AddCommand(menu, "Select &None", QKeySequence("Ctrl+Shift+A"), engine::SelectNone));
  menu.addSeparator();
  onSelection_.push_back(AddCommand(menu, "D&uplicate", QKeySequence("Ctrl+D"), [](auto& doc) {
    RunEdit(doc, engine::DuplicateSelected(doc));
  }));
  onSelection_.push_back(AddCommand(menu, "&Delete", QKeySequence::Delete,
                                    [](auto& doc) { RunEdit(doc, engine::DeleteSelected(doc)); }));
}

// The keys work in the tree and in the picture only: Delete in the layers deletes layers, and
// Ctrl+A in a field selects its text.
QAction* EditMenu::AddCommand(QMenu& menu, const QString& text, const QKeySequence& keys,
                              Command command) {
  QAction* action = AddEntry(menu, text, keys, [command = std::move(command)] {
    if (host::BaseDocument* doc = host::GetActiveDocument()) command(*doc);
  });
  action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
  for (QWidget* place :
       {static_cast<QWidget*>(&window_.Objects()), static_cast<QWidget*>(&window_.View())}) {
    place->addAction(action);
  }
  forObjects_.append(action);
  return action;
}

// The steps have the names of what made them, so that a person knows what Undo will do.
void EditMenu::Follow(host::BaseDocument* doc) {
  undo_->setEnabled(doc && engine::CanUndo(*doc));
  redo_->setEnabled(doc && engine::CanRedo(*doc));
  undo_->setText(NamedStep("&Undo", doc ? engine::UndoName(*doc) : ""));
  redo_->setText(NamedStep("&Redo", doc ? engine::RedoName(*doc) : ""));
  const bool selected = doc && (doc->GetActiveObject() || engine::ActiveTagOf(*doc));
  // While a search is on, "all" are those that it found.
  onScene_.front()->setText(window_.Objects().Model().IsFiltered() ? "Select &All Found"
                                                                   : "Select &All");
  for (QAction* action : onScene_) action->setEnabled(doc && doc->GetFirstObject());
  for (QAction* action : onSelection_) action->setEnabled(selected);
}

}  // namespace desktop
