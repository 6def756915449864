// FocusTurn: the keyboard goes from panel to panel: the picture, the panels and dialogs that can be
// seen, and round again. Main thread.
#pragma once

#include <QMainWindow>

namespace desktop {

// Gives the focus to what takes it first in the next panel, or with -1 in the one before.
void TurnFocus(QMainWindow& window, int way);

}  // namespace desktop
