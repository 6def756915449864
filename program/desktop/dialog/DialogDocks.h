// DialogDocks: every open dialog of the plug-ins in a dock of the main window. Opening a dialog
// opens its dock or brings it to front, closing the dock closes the dialog where that allows it.
// The docks belong to the window. Main thread.
#pragma once

#include <QDockWidget>
#include <QMainWindow>
#include <unordered_map>

#include "program/desktop/dialog/DialogView.h"

namespace desktop {

class DialogDocks final : private engine::DialogObserver {
 public:
  DialogDocks(QMainWindow& window, engine::FileSystem& files);
  ~DialogDocks() override;

  // Null when the dialog is not open.
  DialogView* ViewOf(const host::GeDialog& dialog) const;
  // A dialog that was open since the start: the plug-in that opened it, its title, and whether it
  // is open. Listed in the order of opening.
  struct Known {
    host::LONG plugin;
    QString title;
    host::GeDialog* dialog;  // null while it is closed
  };
  const std::vector<Known>& AllKnown() const { return known_; }
  // Runs each act of a person on any of the dialogs; empty: the act is just run.
  AroundAct around;
  // Brings all docks back to the side of the window that they first stood on.
  void ResetPlaces();

 private:
  void DialogOpened(host::GeDialog& dialog) override;
  void DialogClosed(host::GeDialog& dialog) override;
  void DialogChanged(host::GeDialog&, const engine::Gadget*) override {}
  // The dock and the view of a dialog that opens, at the place that the kept layout has for it,
  // else on the right.
  QDockWidget* Make(host::GeDialog& dialog);

  // On the right side of the window, as a tab where a panel stands there.
  void PutOnTheRight(QDockWidget& dock);
  // Takes up title and dialog of what is open under AllKnown.
  void Remember(host::GeDialog& dialog);

  QMainWindow& window_;
  engine::FileSystem& files_;
  std::vector<Known> known_;
  // Docks of the dialogs that are open.
  std::unordered_map<const host::GeDialog*, QDockWidget*> docks_;
};

}  // namespace desktop
