// Style, palette and style sheet of the desktop, in the colors of a Look. Main thread.
#pragma once

#include "program/desktop/Look.h"

class QApplication;

namespace desktop {

// For the whole program; dark at first.
void ApplyTheme(QApplication& application);
// Brings another look onto the screen; windows that are open follow.
void ShowLook(const Look& look);

}  // namespace desktop
