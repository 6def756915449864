// The icons beside the entries of the main menus, few and for what is looked for most. Main thread.
#pragma once

#include <QMenuBar>
#include <vector>

namespace desktop {

struct MenuIcon {
  const char* menu;   // without the mark of its key
  const char* entry;  // what it says before it ever changes
  const char* icon;
};
const std::vector<MenuIcon>& MenuIcons();

// Gives the entries that are there by now their icons.
void PutIcons(const QMenuBar& bar);

}  // namespace desktop
