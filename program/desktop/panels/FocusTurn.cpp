#include "program/desktop/panels/FocusTurn.h"

#include <QApplication>
#include <QDockWidget>
#include <algorithm>

namespace desktop {

namespace {

bool TakesFocus(const QWidget& widget) {
  return widget.focusPolicy() & Qt::TabFocus && widget.isVisible() && widget.isEnabled() &&
         !widget.focusProxy();
}

// What the panel itself sends the focus to, else the first one of the tab order; null where nothing
// takes it.
QWidget* FirstIn(QWidget& panel) {
  QWidget* proxy = panel.focusProxy();
  if (proxy && TakesFocus(*proxy)) return proxy;
  if (TakesFocus(panel)) return &panel;
  for (QWidget* widget = panel.nextInFocusChain(); widget != &panel;
       widget = widget->nextInFocusChain()) {
    if (panel.isAncestorOf(widget) && TakesFocus(*widget)) return widget;
  }
  return nullptr;
}

QList<QWidget*> PanelsIn(const QMainWindow& window) {
  QList<QWidget*> panels;
  for (const QDockWidget* dock : window.findChildren<QDockWidget*>()) {
    // Those behind another tab stand outside the window.
    const bool isSeen =
        dock->isVisible() && (dock->isFloating() || dock->geometry().intersects(window.rect()));
    if (isSeen && dock->widget()) panels.append(dock->widget());
  }
  // As one reads the screen, column by column, whatever was raised last.
  std::stable_sort(panels.begin(), panels.end(), [](const QWidget* a, const QWidget* b) {
    const QPoint left = a->mapToGlobal(QPoint());
    const QPoint right = b->mapToGlobal(QPoint());
    return std::pair(left.x(), left.y()) < std::pair(right.x(), right.y());
  });
  panels.prepend(window.centralWidget());
  panels.removeIf([](QWidget* panel) { return !FirstIn(*panel); });
  return panels;
}

}  // namespace

void TurnFocus(QMainWindow& window, int way) {
  const QList<QWidget*> panels = PanelsIn(window);
  const QWidget* focus = QApplication::focusWidget();
  qsizetype at = 0;
  while (at < panels.size() && !(panels[at] == focus || (focus && panels[at]->isAncestorOf(focus))))
    ++at;
  if (panels.isEmpty()) return;
  const qsizetype next = at == panels.size() ? 0 : (at + way + panels.size()) % panels.size();
  QWidget* target = FirstIn(*panels[next]);
  target->window()->activateWindow();
  target->setFocus(Qt::TabFocusReason);
}

}  // namespace desktop
