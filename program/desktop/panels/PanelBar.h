// PanelBar: the row of tool buttons at the foot of a panel. The actions belong to the widget that
// they work on, so that their keys work there, too. Main thread.
#pragma once

#include <QAction>
#include <QToolBar>
#include <functional>

namespace desktop {

class PanelBar : public QToolBar {
 public:
  explicit PanelBar(QWidget* parent);

  // A button with an icon that does `work`; its text and keys are shown in the tool tip. With keys
  // it works while `target` has the focus. The action belongs to `target`.
  QAction* Add(QWidget& target, const QString& icon, const QString& text, const QKeySequence& keys,
               std::function<void()> work);
  // Pushes what follows to the right.
  void AddSpace();
};

}  // namespace desktop
