// What the empty lists in the dialogs of known plug-ins say: a dialog has no text of its own for
// that. One table, so that drawing dialogs knows no plug-in. Any thread.
#pragma once

#include <QString>

#include "host/Types.h"

namespace desktop {

// For the dialog that the command with that plug-in ID opened; empty for one that is not in the
// table.
QString EmptyListText(host::LONG pluginId);

}  // namespace desktop
