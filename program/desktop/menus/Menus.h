// Menus: fills the menus of the main window. The simple ones are built in Menus.cpp, the others in
// a file each. The actions belong to the menus; the window outlives both. Main thread.
#pragma once

#include <QKeySequence>
#include <QMenu>
#include <QMenuBar>
#include <functional>
#include <vector>

namespace desktop {

class MainWindow;

// An icon beside an entry: few, for what is looked for most. The names are those before a program
// changes them ("Undo", not "Undo Load").
struct MenuIcon {
  const char* menu;   // without the mark of its key
  const char* entry;  // what it says before it ever changes
  const char* icon;
};
const std::vector<MenuIcon>& MenuIcons();

// Gives the entries that are there by now their icons.
void PutIcons(const QMenuBar& bar);

// An entry that does `work`. `keys` may be empty.
QAction* AddEntry(QMenu& menu, const QString& text, const QKeySequence& keys,
                  std::function<void()> work);

void BuildFileMenu(QMenu& menu, MainWindow& window);
void BuildCreateMenu(QMenu& menu, MainWindow& window);
// `create`: the menu of what one creates, which stands in the context menu of the picture, too.
void BuildViewMenu(QMenu& menu, QMenu& create, MainWindow& window);
void BuildRenderMenu(QMenu& menu, MainWindow& window);
// Filled whenever it opens: plug-ins may be loaded later.
void BuildPluginMenu(QMenu& menu, MainWindow& window);
void BuildScriptMenu(QMenu& menu, MainWindow& window);
void BuildWindowMenu(QMenu& menu, MainWindow& window);
void BuildHelpMenu(QMenu& menu, MainWindow& window);

}  // namespace desktop
