// The shape of a dialog as a text that differs when its widgets have to be built anew: kinds, IDs,
// places and titles of groups, but no values. Main thread.
#pragma once

#include <string>

#include "engine/dialog/Dialogs.h"

namespace desktop {

std::string ShapeOf(const host::GeDialog& dialog);
// The same of the menu bar: texts and IDs, without what is checked or switched off.
std::string ShapeOfMenus(const host::GeDialog& dialog);

}  // namespace desktop
