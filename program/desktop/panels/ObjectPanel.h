// ObjectPanel: the object tree with a field above it that finds objects by a part of their names.
// Main thread.
#pragma once

#include <QLineEdit>
#include <QWidget>

#include "program/desktop/panels/ObjectTree.h"

namespace desktop {

class ObjectPanel : public QWidget, public DocumentView {
 public:
  explicit ObjectPanel(QWidget* parent);

  void Follow(host::BaseDocument* doc) override { tree_->Follow(doc); }
  ObjectTree& Tree() { return *tree_; }
  QLineEdit& Search() { return *search_; }

 private:
  void LeaveSearch();

  QLineEdit* search_;
  ObjectTree* tree_;
};

}  // namespace desktop
