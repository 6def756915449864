// DocumentTabs: the open documents as tabs above the picture; hidden while there is only one. A
// click goes there, the cross asks and closes. It owns no document. Main thread.
#pragma once

#include <QTabBar>

#include "program/desktop/DocumentCommands.h"
#include "program/desktop/panels/DocumentView.h"

namespace desktop {

class DocumentTabs : public QTabBar, public DocumentView {
 public:
  DocumentTabs(engine::Application& application, DocumentCommands& commands, QWidget* parent);

  void Follow(host::BaseDocument* doc) override;
  // Goes `steps` tabs to the right, around the end.
  void Turn(int steps);

 private:
  // A tab as it is shown.
  struct Tab {
    host::ULLONG document;
    QString text;
    bool operator==(const Tab&) const = default;
  };
  // Brings number and texts of the tabs in step.
  void Show(const std::vector<Tab>& tabs);
  // Makes the document of the tab (0-based) the active one.
  void GoTo(int tab);
  // Asks about unsaved changes first.
  void CloseTab(int tab);

  engine::Application& application_;
  DocumentCommands& commands_;
  std::vector<Tab> tabs_;
  bool showing_ = false;  // what changes in here is no act of a person
};

}  // namespace desktop
