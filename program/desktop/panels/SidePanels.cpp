#include "program/desktop/panels/SidePanels.h"

#include <QAction>
#include <algorithm>

namespace desktop {

namespace {

// The picture matters most, also in a small window. Pixels, bounded by shares of the window.
constexpr int kBottomHeight = 250;
constexpr int kLeftWidth = 340;
constexpr int kLeastLeftWidth = 280;  // for names to be read
constexpr double kMostHeight = 0.3;
constexpr double kMostWidth = 0.24;
constexpr double kBelowDialog = 0.36;

}  // namespace

SidePanels::SidePanels(QMainWindow& window) : window_(window) {
  // The columns at the sides are as high as the window; what is at the bottom stands under the
  // picture.
  window_.setCorner(Qt::BottomLeftCorner, Qt::LeftDockWidgetArea);
  window_.setCorner(Qt::BottomRightCorner, Qt::RightDockWidgetArea);
}

const SidePanels::Panel* SidePanels::Find(const char* name) const {
  const auto it = std::ranges::find_if(
      panels_, [name](const Panel& panel) { return panel.dock->objectName() == name; });
  return it == panels_.end() ? nullptr : &*it;
}

// On the left panels stand below each other, elsewhere as tabs behind the first.
void SidePanels::Place(const char* name, const QString& title, Spot place, QWidget* widget,
                       DocumentView* view) {
  auto* dock = new QDockWidget(title, &window_);
  dock->setObjectName(name);
  dock->setWidget(widget);
  if (place.above) {
    window_.splitDockWidget(place.above, dock, Qt::Vertical);
  } else {
    window_.addDockWidget(place.side, dock);
  }
  if (place.side != Qt::LeftDockWidgetArea) {
    for (const Panel& panel : panels_) {
      if (panel.place.side == place.side && panel.place.above == place.above)
        window_.tabifyDockWidget(panel.dock, dock);
    }
  }
  panels_.push_back({dock, place, view});
}

// Adding a tab brings it to front: the first of each side is raised again.
void SidePanels::ShowFirst() {
  const int height = std::min(kBottomHeight, static_cast<int>(window_.height() * kMostHeight));
  const int width =
      std::clamp(static_cast<int>(window_.width() * kMostWidth), kLeastLeftWidth, kLeftWidth);
  const auto first = [this](Qt::DockWidgetArea side) {
    return std::find_if(panels_.begin(), panels_.end(),
                        [side](const Panel& panel) { return panel.place.side == side; });
  };
  if (const auto left = first(Qt::LeftDockWidgetArea); left != panels_.end()) {
    window_.resizeDocks({left->dock}, {width}, Qt::Horizontal);
  }
  if (const auto below =
          std::ranges::find_if(panels_, [](const Panel& panel) { return panel.place.above; });
      below != panels_.end()) {
    below->dock->raise();
    const int lower = static_cast<int>(window_.height() * kBelowDialog);
    window_.resizeDocks({below->place.above, below->dock}, {window_.height() - lower, lower},
                        Qt::Vertical);
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

// A panel behind another tab costs nothing; it follows when it comes to front, since that wakes the
// event loop.
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
