#include "program/desktop/panels/SidePanels.h"

#include <QAction>

namespace desktop {

namespace {

// The picture matters most.
constexpr int kBottomHeight = 250;

}  // namespace

SidePanels::SidePanels(QMainWindow& window) : window_(window) {
  // The columns at the sides are as high as the window; what is at the bottom stands under the picture.
  window_.setCorner(Qt::BottomLeftCorner, Qt::LeftDockWidgetArea);
  window_.setCorner(Qt::BottomRightCorner, Qt::RightDockWidgetArea);
}

void SidePanels::Place(const char* name, const QString& title, Qt::DockWidgetArea side, QWidget* widget, DocumentView* view) {
  auto* dock = new QDockWidget(title, &window_);
  dock->setObjectName(name);
  dock->setWidget(widget);
  window_.addDockWidget(side, dock);
  if (side == Qt::BottomDockWidgetArea) {
    for (const Panel& panel : panels_) {
      if (panel.side == side) window_.tabifyDockWidget(panel.dock, dock);
    }
  }
  panels_.push_back({dock, side, view});
}

void SidePanels::ShowFirstTabs() {
  for (const Panel& panel : panels_) {
    if (panel.side != Qt::BottomDockWidgetArea) continue;
    panel.dock->raise();
    window_.resizeDocks({panel.dock}, {kBottomHeight}, Qt::Vertical);
    return;
  }
}

void SidePanels::Raise(const char* name) {
  for (const Panel& panel : panels_) {
    if (panel.dock->objectName() != name) continue;
    panel.dock->show();
    panel.dock->raise();
  }
}

void SidePanels::Follow(host::BaseDocument* doc) {
  for (const Panel& panel : panels_) {
    if (!panel.dock->visibleRegion().isEmpty()) panel.view->Follow(doc);
  }
}

std::vector<QAction*> SidePanels::ToggleActions() const {
  std::vector<QAction*> actions;
  for (const Panel& panel : panels_) actions.push_back(panel.dock->toggleViewAction());
  return actions;
}

}  // namespace desktop
