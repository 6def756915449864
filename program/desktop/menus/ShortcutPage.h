// ShortcutPage: the keys of all menu entries at a glance, read from the menus themselves. Main thread.
#pragma once

#include <QMainWindow>

namespace desktop {

// Shows them until the person closes the page.
void ShowShortcuts(QMainWindow& window);

}  // namespace desktop
