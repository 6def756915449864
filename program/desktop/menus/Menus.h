// Menus: what fills the menus of the main window, one file a menu. The actions belong to the menus;
// the window outlives both. Main thread.
#pragma once

#include <QKeySequence>
#include <QMenu>
#include <functional>

namespace desktop {

class MainWindow;

// An entry that does `work`. `keys` may be empty.
QAction* AddEntry(QMenu& menu, const QString& text, const QKeySequence& keys,
                  std::function<void()> work);

void BuildFileMenu(QMenu& menu, MainWindow& window);
void BuildCreateMenu(QMenu& menu, MainWindow& window);
// `create`: the menu of what one creates, which stands in the context menu of the picture, too.
void BuildViewMenu(QMenu& menu, QMenu& create, MainWindow& window);
void BuildRenderMenu(QMenu& menu, MainWindow& window);
void BuildPluginMenu(QMenu& menu, MainWindow& window);
void BuildWindowMenu(QMenu& menu, MainWindow& window);
void BuildHelpMenu(QMenu& menu, MainWindow& window);

}  // namespace desktop
