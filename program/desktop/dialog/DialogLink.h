// DialogLink: the way from the widgets of a dialog to the dialog, which may be closed or destroyed before the last of its
// widgets is gone. The DialogView cuts it then. Shared by the widgets; main thread.
#pragma once

#include <QString>
#include <functional>
#include <memory>

#include "engine/dialog/Dialogs.h"

namespace desktop {

struct DialogLink {
  host::GeDialog* dialog = nullptr;  // null once closed
  // What the act of that label is about, for questions that do not say so themselves; may be missing.
  std::function<QString(const host::String& label)> concerns = {};

  // Null when the dialog is closed or has no such gadget any more.
  const engine::Gadget* Find(host::LONG id) const { return dialog ? engine::FindGadget(*dialog, id) : nullptr; }
};

using SharedDialogLink = std::shared_ptr<DialogLink>;

}  // namespace desktop
