// TrashPanel: the Stagemarks of the active document that were deleted or recorded over last, and
// the way back for them: buttons at the foot, a context menu, a double click. Each is one undo
// step. Main thread.
#pragma once

#include <QAction>
#include <QTreeWidget>
#include <QWidget>

#include "engine/outside/Services.h"
#include "engine/scene/DeletedStates.h"
#include "program/desktop/Reports.h"
#include "program/desktop/panels/DocumentView.h"

namespace desktop {

// The one deleted last on top. A text says what the list is for where it is empty.
class TrashList : public QTreeWidget {
 public:
  enum Column { kName, kWhat, kDeleted, kRecorded, kColumnCount };

  explicit TrashList(QWidget* parent);
  void Show(const engine::DeletedStates& states);
  // Where the chosen rows stand in the trash, the highest position first.
  std::vector<std::size_t> Chosen() const;

 protected:
  void paintEvent(QPaintEvent* event) override;
};

class TrashPanel : public QWidget, public DocumentView {
 public:
  // Both outlive it.
  TrashPanel(const engine::Services& services, Reports& reports, QWidget* parent);

  void Follow(host::BaseDocument* doc) override;
  TrashList& List() { return *list_; }
  QSize sizeHint() const override { return {420, 160}; }

 private:
  // Gives back what is chosen; asks for another name where one is taken.
  void Restore();
  // One of them; false when the person would rather not, or it failed, which was told then.
  bool RestoreOne(host::BaseDocument& doc, std::size_t position, outcome::Outcome& outcome);
  // A name that no Stagemark has; empty where the person gives none.
  std::string AskForName(const std::string& taken);
  void Empty();
  void EnableActions();

  const engine::Services& services_;
  Reports& reports_;
  TrashList* list_;
  QAction* restore_;
  QAction* empty_;
  // The document and its trash as shown
  host::ULLONG doc_ = 0;
  engine::SharedDeletedStates shown_;
};

}  // namespace desktop
