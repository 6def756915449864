// CameraCommands: the actions on cameras: a new one from what is seen, making one the scene camera,
// looking through it, letting it fly. They stand in menus, in the context menus of picture and
// tree, and on the notice in the picture. Main thread.
#pragma once

#include <QAction>
#include <QObject>

#include "host/BaseObject.h"
#include "program/desktop/panels/DocumentView.h"

namespace desktop {

class MainWindow;

class CameraCommands : public QObject, public DocumentView {
 public:
  // Belongs to the window.
  explicit CameraCommands(MainWindow& window);

  void Follow(host::BaseDocument* doc) override;
  QAction& NewCamera() { return *newCamera_; }
  // The commands on a camera that is there, in the order of a menu.
  QList<QAction*> ForCameras() const { return {lookThrough_, makeSceneCamera_, fly_}; }

 private:
  // An action that gets the active document; nothing happens without one. `keys` may be empty.
  template <class Command>
  QAction* Add(const QString& text, const QString& tip, const char* keys, Command command);
  // A camera that sees what the picture shows, and looks through it.
  void AddNew(host::BaseDocument& doc);
  // Null: nothing happens.
  void LookThrough(host::BaseObject* camera);
  // Makes it the scene camera. Null: nothing happens.
  void MakeScenes(host::BaseDocument& doc, host::BaseObject* camera);

  MainWindow& window_;
  QAction* newCamera_;
  QAction* lookThrough_;      // the selected one
  QAction* makeSceneCamera_;  // the selected one, else the one that is looked through
  QAction* fly_;
  QAction* makeSeen_;  // on the notice: the one that is looked through
  QAction* rowLookThrough_;
  QAction* rowMakeSceneCamera_;
};

}  // namespace desktop
