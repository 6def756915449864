// The widget of each kind of gadget, and how it follows its gadget. Clicks and typing become events
// of the dialog; a dialog that is gone hears nothing. The widgets belong to their parent. Main
// thread.
#pragma once

#include <QWidget>
#include <functional>

#include "program/desktop/dialog/DialogLink.h"

namespace desktop {

struct GadgetWidget {
  QWidget* widget;
  // Brings the widget in step with the gadget without an event.
  std::function<void(const engine::Gadget&)> show;
};

// For every kind but a group. Shows the gadget's present value already.
GadgetWidget MakeGadgetWidget(const SharedDialogLink& link, const engine::Gadget& gadget,
                              QWidget* parent);

}  // namespace desktop
