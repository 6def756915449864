// EditMenu: undo and redo with the names of their steps, and what works on the selection. It belongs to its menu. Main thread.
#pragma once

#include <QMenu>
#include <QObject>

#include "program/desktop/panels/DocumentView.h"

namespace desktop {

class MainWindow;

class EditMenu : public QObject, public DocumentView {
 public:
  EditMenu(QMenu& menu, MainWindow& window);

  void Follow(host::BaseDocument* doc) override;

 private:
  QAction* undo_;
  QAction* redo_;
};

}  // namespace desktop
