// ObjectSelection: lets a tree of objects select in the document itself. What is selected stands
// there alone, as a bit of each object, so that nothing has to be kept in step and selecting
// hundred thousands costs a walk over them; the ranges of the toolkit stay empty. It keeps the
// current row only. Main thread.
#pragma once

#include <QItemSelectionModel>

#include "program/desktop/panels/ObjectRows.h"

namespace desktop {

class ObjectSelection : public QItemSelectionModel {
 public:
  ObjectSelection(ObjectRows& rows, QObject* parent)
      : QItemSelectionModel(&rows, parent), rows_(rows) {}

  using QItemSelectionModel::select;
  // To clear takes tags off the selection, too.
  void select(const QItemSelection& selection, SelectionFlags command) override;
  bool Has(const QModelIndex& index) const;

 private:
  ObjectRows& rows_;
};

}  // namespace desktop
