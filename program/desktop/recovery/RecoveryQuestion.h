// What a person is asked at the start after a crash: whether work that was not saved shall be
// recovered. Main thread.
#pragma once

#include "program/desktop/DocumentCommands.h"
#include "program/desktop/recovery/Autosave.h"

namespace desktop {

// Asks where there is lost work and does what is answered. Recovered documents are open and changed
// afterwards, and kept by `autosave`; what cannot be opened is told and stays in the state folder.
void OfferLostWork(const engine::Services& services, DocumentCommands& commands, Autosave& autosave,
                   QWidget* window);

}  // namespace desktop
