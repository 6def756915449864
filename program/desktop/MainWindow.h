// MainWindow: menus, the docks of the plug-ins' dialogs, status line; and the beat of the event loop that delivers what was
// posted. A thin view over the application, which it does not own. Main thread.
#pragma once

#include <QMainWindow>
#include <QSettings>

#include "program/desktop/DialogDocks.h"
#include "program/desktop/DocumentCommands.h"
#include "program/desktop/ObjectTree.h"
#include "program/desktop/Viewport.h"

namespace desktop {

class MainWindow : public QMainWindow {
 public:
  // `settingsFile`: where recent files and the layout are kept between runs.
  MainWindow(engine::Application& application, DesktopPerson& person, const QString& settingsFile);
  ~MainWindow() override;

  DocumentCommands& Commands() { return commands_; }
  DialogDocks& Docks() { return docks_; }
  Viewport& View() { return *view_; }
  ObjectTree& Objects() { return *objects_; }
  // Opens the dialogs of the plug-ins and brings everything to where it stood at the end of the last run.
  void RestoreLayout();
  // Delivers posted events and brings title and actions in step; called by the event loop before it waits.
  void Beat();

 protected:
  void closeEvent(QCloseEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  void BuildFileMenu();
  void BuildEditMenu();
  void BuildViewMenu();
  void BuildPluginMenu();
  void BuildWindowMenu();
  void BuildHelpMenu();
  void FillRecentMenu(QMenu& menu);
  void FillDocumentList(QMenu& menu);
  QAction* Add(QMenu& menu, const QString& text, const QKeySequence& keys, std::function<void()> work);
  void ShowState();
  void ResetLayout();
  void ShowAbout();
  void Choose(engine::NodeId object);

  engine::Application& application_;
  QSettings settings_;
  DesktopPerson& person_;
  DocumentCommands commands_;
  DialogDocks docks_;
  Viewport* view_;
  ObjectTree* objects_;
  QDockWidget* objectsDock_;
  QAction* undo_ = nullptr;
  QAction* redo_ = nullptr;
  QByteArray firstLayout_;
};

}  // namespace desktop
