// DialogView: any dialog of a plug-in as a widget, drawn from its gadget tree: groups, gadgets and
// menu bar. It follows the dialog, gathering changes until the event loop has time, and sends what
// a person does as the dialog's events. It does not own the dialog; when that closes the view goes
// blank and says so. Main thread.
#pragma once

#include <QTimer>
#include <QWidget>
#include <functional>
#include <unordered_map>
#include <unordered_set>

#include "program/desktop/dialog/GadgetGrid.h"
#include "program/desktop/dialog/GadgetWidgets.h"

class QGridLayout;
class QMenuBar;
class QScrollArea;

namespace desktop {

class DialogView : public QWidget, private engine::DialogObserver {
 public:
  DialogView(host::GeDialog& dialog, engine::FileSystem& files, QWidget* parent);
  ~DialogView() override;

  // Null once the dialog is closed.
  host::GeDialog* Dialog() const { return link_->dialog; }
  // The widget of a gadget; null when there is none of that ID.
  QWidget* WidgetOf(host::LONG id) const;
  QMenuBar& Menus() const { return *menus_; }
  QSize sizeHint() const override;
  // Shown in the lists of the dialog while they have no rows.
  void SetEmptyListText(const QString& text);
  // Tells which element an act of that label is about; shown with questions that come up in it.
  void SetConcerns(std::function<QString(const host::String& label)> concerns) {
    link_->concerns = std::move(concerns);
  }
  // Runs each act of a person on the dialog.
  void SetAround(AroundAct around) { link_->around = std::move(around); }
  // Shows what has changed up to now at once.
  void CatchUp();

  // Called when the dialog has closed. The view may be deleted later, not inside.
  std::function<void()> closed;
  // Called when the widgets have been built anew.
  std::function<void()> built;
  // Called before changes of the dialog are shown, while it works on nothing.
  std::function<void()> changing;
  // Called when the title may have changed.
  std::function<void()> titled;

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  void DialogOpened(host::GeDialog&) override {}
  void DialogClosed(host::GeDialog& dialog) override;
  void DialogChanged(host::GeDialog& dialog, const engine::Gadget* gadget) override;

  // Builds menus and widgets anew, each only where its shape has changed.
  void Build();
  // Makes the group with all gadgets below it. The caller puts it into a layout.
  QWidget* BuildGroup(const engine::Gadget& group, QWidget* parent);
  // Makes the widget of `child` and puts it into the cell.
  void Place(const engine::Gadget& child, Cell cell, QGridLayout& grid, QWidget& group);
  // Where room is short the pictures give way first, then the air
  // around the groups; only then the dialog scrolls.
  void FitToWidth();
  // In pixels; 0 or less where everything has room.
  int MissingWidth() const;
  // Sets the borders that the plug-in asks for, or narrow ones.
  void SetBorders(bool wide);
  // Lets the layouts measure what has changed in them at once.
  void UpdateLayouts();

  SharedDialogLink link_;
  QString emptyListText_;
  QMenuBar* menus_;
  QScrollArea* area_;
  // With the borders that the plug-in asks for
  std::vector<std::pair<QGridLayout*, QMargins>> groups_;
  std::string shape_;  // of the gadget tree as drawn
  std::string menuShape_;
  // By gadget ID. Gadgets without one are never changed by the plug-in.
  std::unordered_map<host::LONG, GadgetWidget> widgets_;
  // IDs of gadgets that have changed since the last CatchUp; `changedWholly_`: the tree itself has.
  std::unordered_set<host::LONG> changed_;
  bool changedWholly_ = false;
  // Runs CatchUp when the event loop has time.
  QTimer catchUp_;
  bool isWaiting_ = false;  // to catch up when the documents are free
};

}  // namespace desktop
