// The menus of a dialog in a menu bar. Main thread.
#pragma once

#include "program/desktop/dialog/DialogLink.h"

class QMenuBar;

namespace desktop {

// Fills the bar anew with the dialog's menus; an entry that is chosen becomes an event. Check marks
// and what is switched off are taken over whenever a menu opens.
void ShowMenus(QMenuBar& bar, const SharedDialogLink& link);

}  // namespace desktop
