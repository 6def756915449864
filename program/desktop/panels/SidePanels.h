// SidePanels: the docks around the picture, each with one view of the active document: objects,
// attributes and so on. A panel that cannot be seen is not kept up to date; it follows as soon as
// it shows. The docks belong to the window. Main thread.
#pragma once

#include <QDockWidget>
#include <QMainWindow>
#include <vector>

#include "program/desktop/panels/DocumentView.h"

namespace desktop {

class SidePanels {
 public:
  explicit SidePanels(QMainWindow& window);

  // Puts a widget that is a DocumentView, too, into a dock of its own; docks of one side stand in
  // the order of adding, those of the bottom and of the right as tabs. `name` marks the dock in the
  // kept layout. The dock owns the widget.
  template <class View>
  View* Add(const char* name, const QString& title, Qt::DockWidgetArea side, View* view) {
    Place(name, title, {side, nullptr}, view, view);
    return view;
  }
  // As Add, in a dock below that of the panel `above`; all that stand below it are tabs.
  template <class View>
  View* AddBelow(const char* above, const char* name, const QString& title, View* view) {
    Place(name, title, {Find(above)->place.side, Find(above)->dock}, view, view);
    return view;
  }
  // Brings the first of the tabs to the front and leaves the most of the window to the picture;
  // after the last Add.
  void ShowFirst();
  // Shows the panel of that name and brings it to the front.
  void Raise(const char* name);
  // Tells the panels that can be seen which document is active.
  void Follow(host::BaseDocument* doc);
  // Their entries of the window menu, in the order of adding.
  std::vector<QAction*> ToggleActions() const;

 private:
  struct Spot {
    Qt::DockWidgetArea side;
    QDockWidget* above;  // of the panel above; null: at the side by itself
  };
  struct Panel {
    QDockWidget* dock;
    Spot place;
    DocumentView* view;
  };
  void Place(const char* name, const QString& title, Spot place, QWidget* widget,
             DocumentView* view);
  // Null where there is none of that name.
  const Panel* Find(const char* name) const;

  QMainWindow& window_;
  std::vector<Panel> panels_;
};

}  // namespace desktop
