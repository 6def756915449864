// ShortcutPage: all keys at a glance: of the menu entries and panels, read from these themselves,
// and the few that no entry stands for. Main thread.
#pragma once

#include <QMainWindow>

namespace desktop {

// Shows them until the person closes the page.
void ShowShortcuts(QMainWindow& window);

}  // namespace desktop
