#include "program/desktop/menus/Menus.h"

namespace desktop {

QAction* AddEntry(QMenu& menu, const QString& text, const QKeySequence& keys,
                  std::function<void()> work) {
  QAction* action = menu.addAction(text);
  action->setShortcut(keys);
  QObject::connect(action, &QAction::triggered, action, [work = std::move(work)] { work(); });
  return action;
}

}  // namespace desktop
