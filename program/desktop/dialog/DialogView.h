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
  DialogView(host::GeDialog& dialog, QWidget* parent);
  ~DialogView() override;

  // Null once the dialog is closed.
  host::GeDialog* Dialog() const { return link_->dialog; }
  // The widget of a gadget; null when there is none of that ID.
  QWidget* WidgetOf(host::LONG id) const;
  QMenuBar& Menus() const { return *menus_; }
  QSize sizeHint() const override;
  // What the lists of the dialog show while they have no rows.
  void SetEmptyListText(const QString& text);
  // What an act of that label is about; told with questions that come up in it.
  void SetConcerns(std::function<QString(const host::String& label)> concerns) {
    link_->concerns = std::move(concerns);
  }
  // What is done around each act of a person.
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

  void Build();
  QWidget* BuildGroup(const engine::Gadget& group, QWidget* parent);
  void Place(const engine::Gadget& child, Cell cell, QGridLayout& grid, QWidget& group);
  // What is too little room for all of it takes it from the pictures first, then from the air
  // around the groups; only then the dialog scrolls.
  void GiveWay();
  int MissingWidth() const;
  void SetAir(bool wide);
  void MeasureAnew();

  SharedDialogLink link_;
  QString emptyListText_;
  QMenuBar* menus_;
  QScrollArea* area_;
  // With the borders that the plug-in asks for
  std::vector<std::pair<QGridLayout*, QMargins>> groups_;
  std::string shape_;  // of the gadget tree as drawn
  std::string menuShape_;
  std::unordered_map<host::LONG, GadgetWidget> widgets_;
  std::unordered_set<host::LONG> changed_;
  bool changedWholly_ = false;
  QTimer soon_;
};

}  // namespace desktop
