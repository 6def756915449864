// ApplicationStyle: how the program's own controls look: the drawing of the controls, the palette
// and the style sheet, in the colors of the theme in use. Main thread.
#pragma once

#include "program/desktop/Theme.h"

class QApplication;

namespace desktop {

// Called once at the start, for the whole program; dark at first.
void ApplyTheme(QApplication& application);
// Brings another theme onto the screen; windows that are open follow.
void ShowTheme(const Theme& theme);

}  // namespace desktop
