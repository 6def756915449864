// HistoryPanel: the undo steps of the active document in a list, the oldest on top. The present
// state is marked, what was undone follows it faintly; a click goes there. Main thread.
#pragma once

#include <QListWidget>

#include "engine/application/Application.h"
#include "program/desktop/panels/DocumentView.h"

namespace desktop {

class HistoryPanel : public QListWidget, public DocumentView {
 public:
  HistoryPanel(engine::Application& application, QWidget* parent);

  void Follow(host::BaseDocument* doc) override;
  QSize sizeHint() const override { return {240, 160}; }

 private:
  void Fill(const QStringList& done, const QStringList& undone);
  void GoTo(int row);

  engine::Application& application_;
  engine::NodeId doc_ = 0;
  host::ULLONG seen_ = 0;
  QStringList done_;
  QStringList undone_;
};

}  // namespace desktop
