// EditMenu: undo and redo with the names of their steps, and what works on the selection. The
// latter is also in the context menus of the object tree and the viewport; its keys work where
// objects are worked on, so that they never reach past a list or field that has the focus. It
// belongs to its menu. Main thread.
#pragma once

#include <QMenu>
#include <QObject>
#include <functional>
#include <vector>

#include "program/desktop/panels/DocumentView.h"

namespace desktop {

class MainWindow;

class EditMenu : public QObject, public DocumentView {
 public:
  EditMenu(QMenu& menu, MainWindow& window);

  void Follow(host::BaseDocument* doc) override;
  // The entries that work on objects, in the order of the menu.
  const QList<QAction*>& ForObjects() const { return forObjects_; }

 private:
  using Command = std::function<void(host::BaseDocument&)>;
  // An entry that gets the active document, with keys that work in the tree and in the picture.
  QAction* AddCommand(QMenu& menu, const QString& text, const QKeySequence& keys, Command command);

  MainWindow& window_;
  QAction* undo_;
  QAction* redo_;
  QList<QAction*> forObjects_;
  std::vector<QAction*> onScene_;      // need objects
  std::vector<QAction*> onSelection_;  // need something selected
};

}  // namespace desktop
