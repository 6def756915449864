// PanelCommands: what one does in a panel to the chosen materials, layers or render settings of a
// document: buttons at the foot, the same entries in a context menu, and keys. The actions belong
// to the view. Main thread.
#pragma once

#include <QAction>
#include <QLayout>
#include <QMenu>
#include <QToolBar>
#include <functional>

#include "host/BaseDocument.h"

namespace desktop {

// The row of tool buttons at the foot of a panel. The actions belong to the widget that they work
// on, so that their keys work there, too.
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

// `View`: an item view with Document, null without one, and Chosen, a list of elements.
template <class View>
class PanelCommands {
 public:
  // Shows `menu` when one asks for it in the view. The view outlives this.
  PanelCommands(View& view, std::function<void(QMenu&)> menu) : view_(view) {
    view.setContextMenuPolicy(Qt::CustomContextMenu);
    QObject::connect(&view, &QWidget::customContextMenuRequested, &view,
                     [this, menu](const QPoint& place) {
                       QMenu shown(&view_);
                       shown.addActions(all_);
                       menu(shown);
                       shown.exec(view_.viewport()->mapToGlobal(place));
                     });
  }

  // Puts the buttons below what `side` has in its layout; before the first Add.
  void PutBelow(QWidget& side) {
    bar_ = new PanelBar(&side);
    side.layout()->addWidget(bar_);
  }
  // One that needs a document only.
  void AddMaker(const QString& text, std::function<void(host::BaseDocument&)> make) {
    maker_ = bar_->Add(view_, "add", text, {}, [this, make = std::move(make)] {
      if (host::BaseDocument* doc = view_.Document()) make(*doc);
    });
    all_.append(maker_);
  }
  // One that is given the document and the chosen elements, at least one.
  template <class Act>
  QAction* Add(const char* icon, const QString& text, const QKeySequence& keys, Act act) {
    all_.append(bar_->Add(view_, icon, text, keys, [this, act] { Do(act); }));
    return all_.back();
  }
  void AddSpace() { bar_->AddSpace(); }
  template <class Act>
  void Do(Act act) {
    host::BaseDocument* doc = view_.Document();
    const auto chosen = view_.Chosen();
    if (doc && !chosen.empty()) act(*doc, chosen);
  }
  // Switches off what cannot be done now.
  void Follow(const host::BaseDocument* doc) {
    const bool any = view_.selectionModel()->hasSelection();
    for (QAction* action : all_) action->setEnabled(action == maker_ ? doc != nullptr : any);
  }

 private:
  View& view_;
  PanelBar* bar_ = nullptr;
  QAction* maker_ = nullptr;
  QList<QAction*> all_;
};

}  // namespace desktop
