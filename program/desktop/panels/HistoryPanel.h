// HistoryPanel: the undo steps of the active document in a list, the oldest on top. The present
// state is marked, what was undone follows it faintly; a click goes there. Main thread.
#pragma once

#include <QListWidget>

#include "program/desktop/Reports.h"
#include "program/desktop/panels/DocumentView.h"

namespace desktop {

class HistoryPanel : public QListWidget, public DocumentView {
 public:
  // Both outlive it.
  HistoryPanel(engine::Application& application, Reports& reports, QWidget* parent);

  void Follow(host::BaseDocument* doc) override;
  QSize sizeHint() const override { return {240, 160}; }

 private:
  // Makes the rows anew from the names of the steps, the oldest first.
  void Fill(const QStringList& done, const QStringList& undone);
  // Undoes or redoes up to the state after the step of that row; row 0 is the state before the
  // first one. Ends early where a step is refused.
  void GoTo(int row);

  engine::Application& application_;
  Reports& reports_;
  // The document that is shown and its change count then.
  engine::NodeId doc_ = 0;
  host::ULLONG seen_ = 0;
  // The names as shown: rows are made anew only when they differ.
  QStringList done_;
  QStringList undone_;
};

}  // namespace desktop
