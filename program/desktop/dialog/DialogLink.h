// DialogLink: the way from the widgets of a dialog to the dialog, which may be closed or destroyed
// before the last of its widgets is gone. The DialogView cuts it then. Shared by the widgets; main
// thread.
#pragma once

#include <QString>
#include <functional>
#include <memory>
#include <string>

#include "engine/dialog/Dialogs.h"
#include "engine/outside/FileSystem.h"

namespace desktop {

// Runs an act of a person on a dialog, which answers it, with whatever is to be done around it.
// `label`: of the button or entry.
using AroundAct = std::function<void(host::GeDialog& dialog, const std::string& label,
                                     const std::function<bool()>& act)>;

struct DialogLink {
  host::GeDialog* dialog = nullptr;  // null once closed
  engine::FileSystem& files;         // where the pictures of its buttons are
  // Names the element that an act of that label is about, for questions that do not; may be
  // missing.
  std::function<QString(const host::String& label)> concerns = {};
  AroundAct around{};  // empty: the act is just run

  // Null when the dialog is closed or has no such gadget any more.
  const engine::Gadget* Find(host::LONG id) const {
    return dialog ? engine::FindGadget(*dialog, id) : nullptr;
  }
};

using SharedDialogLink = std::shared_ptr<DialogLink>;

}  // namespace desktop
