// MainWindow: the frame that holds picture, panels, the docks of the plug-ins' dialogs, menus and
// status line. Whenever the event loop is about to wait it delivers posted events and brings all of
// them in step with the active document. A thin view over the application, which it does not own.
// Main thread.
#pragma once

#include <QMainWindow>
#include <QTimer>

#include "engine/editing/InspectedElements.h"
#include "program/desktop/Appearance.h"
#include "program/desktop/DocumentCommands.h"
#include "program/desktop/DocumentTabs.h"
#include "program/desktop/Reports.h"
#include "program/desktop/dialog/CurrentStateMark.h"
#include "program/desktop/dialog/DialogDocks.h"
#include "program/desktop/dialog/StatesDialog.h"
#include "program/desktop/menus/CameraCommands.h"
#include "program/desktop/menus/EditMenu.h"
#include "program/desktop/panels/MaterialThumbnails.h"
#include "program/desktop/panels/ObjectsPanel.h"
#include "program/desktop/panels/SidePanels.h"
#include "program/desktop/recovery/Autosave.h"
#include "program/desktop/script/ScriptConsole.h"
#include "program/desktop/view/Viewport.h"

namespace desktop {

class MainWindow : public QMainWindow {
 public:
  // `settingsFile`: where recent files and the layout are kept between runs; empty: nowhere.
  MainWindow(engine::Application& application, DesktopPerson& person,
             const std::string& settingsFile);
  ~MainWindow() override;

  DocumentCommands& Commands() { return commands_; }
  engine::Application& App() { return application_; }
  Autosave& GetAutosave() { return autosave_; }
  DialogDocks& Docks() { return docks_; }
  const StatesDialog& States() const { return states_; }
  Reports& Reporting() { return reports_; }
  DocumentTabs& Tabs() { return *tabs_; }
  SidePanels& Panels() { return panels_; }
  Viewport& View() { return *view_; }
  ObjectTree& Objects() { return objects_->Tree(); }
  // The elements that the attributes panel shows; a panel may put its own there.
  engine::InspectedElements& Inspected() { return inspected_; }
  ScriptConsole& Console() { return *console_; }
  EditMenu& Edit() { return *editMenu_; }
  CameraCommands& Cameras() { return *cameraCommands_; }
  AppearanceMenu& Appearance() { return *appearanceMenu_; }
  // Offers what a desktop that crashed has left.
  void OfferLostWork();
  // Opens the dialogs of the plug-ins and brings everything to where it stood at the end of the
  // last run.
  void RestoreLayout();
  // Brings every panel and dialog back to where it stood when the program was new.
  void ResetLayout();
  // Delivers posted events and brings title and actions in step; called by the event loop before it
  // waits.
  void Refresh();

 protected:
  void closeEvent(QCloseEvent* event) override;
  void changeEvent(QEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  // The tabs of the documents above the picture.
  void BuildCenter();
  // The docks with the panels, in their first places.
  void BuildPanels();
  // A press in `view` brings its selection back into the attributes, though nothing else got
  // selected.
  void InspectWhatIsPressed(QAbstractItemView& view, engine::InspectedElements::Kind kind);
  void BuildMenus();
  // The name of the active document, with a mark while it is changed.
  void ShowTitle();
  // Asks in the next turn of the loop whether the file of the active document is still the one it
  // was read from; once for each time that a person comes to the document or back to the window.
  void CheckFileSoon(const host::BaseDocument* doc);
  // Selects the object that was clicked on in the picture; 0 selects nothing.
  void Choose(engine::NodeId object, Viewport::Picking how);

  engine::Application& application_;
  Settings settings_;
  DesktopPerson& person_;
  DocumentCommands commands_;
  Autosave autosave_;
  Reports reports_;
  DialogDocks docks_;
  StatesDialog states_{docks_};
  engine::InspectedElements inspected_;
  SidePanels panels_;
  std::shared_ptr<MaterialThumbnails> thumbnails_;
  DocumentTabs* tabs_;
  Viewport* view_;
  ObjectsPanel* objects_;
  ScriptRunner scripts_{person_};
  ScriptConsole* console_ = nullptr;
  EditMenu* editMenu_ = nullptr;
  CameraCommands* cameraCommands_ = nullptr;
  CurrentStateMark currentState_{states_};
  // The document whose file was looked at since a person came back to it
  host::ULLONG lookedAtFile_ = 0;
  QTimer look_;
  AppearanceMenu* appearanceMenu_ = nullptr;
  // The layout of a first start, for ResetLayout.
  QByteArray firstLayout_;
};

}  // namespace desktop
