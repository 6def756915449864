#include "program/desktop/menus/EditMenu.h"

#include "engine/undo/Undo.h"
#include "program/desktop/MainWindow.h"
#include "program/desktop/Text.h"
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
      undo_(AddEntry(menu, "&Undo", QKeySequence::Undo, [&window] { window.App().Undo(); })),
      redo_(AddEntry(menu, "&Redo", QKeySequence("Ctrl+Shift+Z"), [&window] { window.App().Redo(); })) {}

void EditMenu::Follow(host::BaseDocument* doc) {
  undo_->setEnabled(doc && engine::CanUndo(*doc));
  redo_->setEnabled(doc && engine::CanRedo(*doc));
  undo_->setText(NamedStep("&Undo", doc ? engine::UndoName(*doc) : ""));
  redo_->setText(NamedStep("&Redo", doc ? engine::RedoName(*doc) : ""));
}

}  // namespace desktop
