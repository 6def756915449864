#include "program/desktop/panels/ObjectPanel.h"

#include <QShortcut>
#include <QVBoxLayout>

#include "program/desktop/Icons.h"

namespace desktop {

ObjectPanel::ObjectPanel(QWidget* parent)
    : QWidget(parent), search_(new QLineEdit(this)), tree_(new ObjectTree(this)) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(4, 4, 4, 0);
  layout->setSpacing(4);
  layout->addWidget(search_);
  layout->addWidget(tree_);
  setFocusProxy(tree_);
  search_->setPlaceholderText("Search objects");
  search_->setToolTip("Shows only objects with this in their names (Ctrl+L or /, Escape ends)");
  search_->setClearButtonEnabled(true);
  search_->addAction(Icon("search"), QLineEdit::LeadingPosition);
  search_->setAccessibleName("Search objects");
  connect(search_, &QLineEdit::textChanged, tree_, &ObjectTree::SetFilter);
  connect(search_, &QLineEdit::returnPressed, tree_, qOverload<>(&QWidget::setFocus));
  const auto find = [this] {
    search_->setFocus(Qt::ShortcutFocusReason);
    search_->selectAll();
  };
  const auto add = [](QWidget* place, const QKeySequence& keys, Qt::ShortcutContext where,
                      const char* what, auto act) {
    auto* shortcut = new QShortcut(keys, place, nullptr, nullptr, where);
    shortcut->setWhatsThis(what);
    connect(shortcut, &QShortcut::activated, place, act);
  };
  add(this, QKeySequence("Ctrl+L"), Qt::WindowShortcut, "Search objects", find);
  add(tree_, QKeySequence("/"), Qt::WidgetShortcut, "Search objects", find);
  add(this, QKeySequence(Qt::Key_Escape), Qt::WidgetWithChildrenShortcut, "End the search",
      [this] { LeaveSearch(); });
}

void ObjectPanel::LeaveSearch() {
  search_->clear();
  tree_->setFocus();
}

}  // namespace desktop
