#include "program/desktop/panels/PanelCommands.h"

#include "program/desktop/Icons.h"

namespace desktop {

PanelBar::PanelBar(QWidget* parent) : QToolBar(parent) {
  setIconSize({16, 16});
  setMovable(false);
  setFocusPolicy(Qt::NoFocus);
}

// The key works in `target` only; the tip names it, because a bar shows no keys.
QAction* PanelBar::Add(QWidget& target, const QString& icon, const QString& text,
                       const QKeySequence& keys, std::function<void()> work) {
  auto* action = new QAction(Icon(icon), text, &target);
  action->setShortcut(keys);
  action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
  if (!keys.isEmpty())
    action->setToolTip(QString("%1 (%2)").arg(text, keys.toString(QKeySequence::NativeText)));
  QObject::connect(action, &QAction::triggered, action, [work = std::move(work)] { work(); });
  target.addAction(action);
  addAction(action);
  return action;
}

void PanelBar::AddSpace() {
  auto* space = new QWidget(this);
  space->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
  addWidget(space);
}

}  // namespace desktop
