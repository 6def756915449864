#include "program/desktop/FileChooser.h"
#include "program/desktop/MainWindow.h"
#include "program/desktop/Text.h"
#include "program/desktop/menus/Menus.h"

namespace desktop {

namespace {

void FillRecentMenu(QMenu& menu, DocumentCommands& commands) {
  menu.clear();
  for (const QString& path : commands.RecentFiles()) {
    AddEntry(menu, Label(ToHost(path)), {},
             [&commands, path] { commands.Open(path.toStdString()); });
  }
  if (menu.isEmpty()) menu.addAction("No files yet")->setEnabled(false);
}

}  // namespace

void BuildFileMenu(QMenu& menu, MainWindow& window) {
  DocumentCommands& commands = window.Commands();
  AddEntry(menu, "&New", QKeySequence::New, [&commands] { commands.New(); });
  AddEntry(menu, "&Open...", QKeySequence::Open, [&commands] { commands.AskAndOpen(kAllScenes); });
  AddEntry(menu, "&Import...", {}, [&commands] { commands.AskAndOpen(kForeignScenes); });
  QMenu* recent = menu.addMenu("Open &Recent");
  QObject::connect(recent, &QMenu::aboutToShow, recent,
                   [recent, &commands] { FillRecentMenu(*recent, commands); });
  menu.addSeparator();
  AddEntry(menu, "&Save", QKeySequence::Save,
           [&commands] { commands.Save(*host::GetActiveDocument()); });
  AddEntry(menu, "Save &As...", QKeySequence("Ctrl+Shift+S"),
           [&commands] { commands.SaveAs(*host::GetActiveDocument()); });
  AddEntry(menu, "&Close", QKeySequence("Ctrl+W"),
           [&commands] { commands.Close(*host::GetActiveDocument()); });
  menu.addSeparator();
  AddEntry(menu, "&Quit", QKeySequence("Ctrl+Q"), [&window] { window.close(); });
}

}  // namespace desktop
