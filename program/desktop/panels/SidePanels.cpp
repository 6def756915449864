#include "program/desktop/panels/SidePanels.h"

#include <QAction>
#include <algorithm>

namespace desktop {

namespace {

// The picture matters most, also in a small window.
constexpr int kBottomHeight = 250;
constexpr int kLeftWidth = 340;
constexpr int kLeastLeftWidth = 280;  // for names to be read
constexpr double kMostHeight = 0.3;
constexpr double kMostWidth = 0.24;

}  // namespace

SidePanels::SidePanels(QMainWindow& window) : window_(window) {
  // The columns at the sides are as high as the window; what is at the bottom stands under the
  // picture.
  window_.setCorner(Qt::BottomLeftCorner, Qt::LeftDockWidgetArea);
  window_.setCorner(Qt::BottomRightCorner, Qt::RightDockWidgetArea);
}

void SidePanels::Place(const char* name, const QString& title, Qt::DockWidgetArea side,
                       QWidget* widget, DocumentView* view) {
  auto* dock = new QDockWidget(title, &window_);
  dock->setObjectName(name);
  dock->setWidget(widget);
  window_.addDockWidget(side, dock);
  if (side != Qt::LeftDockWidgetArea) {
    for (const Panel& panel : panels_) {
      if (panel.side == side) window_.tabifyDockWidget(panel.dock, dock);
    }
  }
  panels_.push_back({dock, side, view});
}

void SidePanels::ShowFirst() {
  const int height = std::min(kBottomHeight, static_cast<int>(window_.height() * kMostHeight));
  const int width =
      std::clamp(static_cast<int>(window_.width() * kMostWidth), kLeastLeftWidth, kLeftWidth);
  const auto first = [this](Qt::DockWidgetArea side) {
    return std::find_if(panels_.begin(), panels_.end(),
                        [side](const Panel& panel) { return panel.side == side; });
  };
  if (const auto left = first(Qt::LeftDockWidgetArea); left != panels_.end()) {
    window_.resizeDocks({left->dock}, {width}, Qt::Horizontal);
  }
  if (const auto bottom = first(Qt::BottomDockWidgetArea); bottom != panels_.end()) {
    bottom->dock->raise();
    window_.resizeDocks({bottom->dock}, {height}, Qt::Vertical);
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
