#include <QActionGroup>

#include "engine/editing/ObjectCommands.h"
#include "engine/editing/Selection.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/TreeWalk.h"
#include "host/BaseObject.h"
#include "program/desktop/MainWindow.h"
#include "program/desktop/Text.h"
#include "program/desktop/background/SlicedEdit.h"
#include "program/desktop/menus/Menus.h"

namespace desktop {

namespace {

// Scenes with more cameras than a menu can show are there.
constexpr int kMostCameras = 40;

// A key that works while the picture has the focus, so that it can be typed elsewhere. Letters
// alone as keys would be taken from every field that one types in.
QAction* AddPictureEntry(QMenu& menu, const QString& text, const QList<QKeySequence>& keys,
                         Viewport& view, std::function<void()> work) {
  QAction* action = AddEntry(menu, text, {}, std::move(work));
  action->setShortcuts(keys);
  action->setShortcutContext(Qt::WidgetShortcut);
  view.addAction(action);
  return action;
}

// O(objects) up to the last camera shown, each time that it opens.
void FillCameraMenu(QMenu& menu, Viewport& view) {
  menu.clear();
  const host::BaseDocument* doc = host::GetActiveDocument();
  int count = 0;
  for (host::BaseObject* object = doc ? doc->GetFirstObject() : nullptr;
       object && count < kMostCameras; object = engine::NextInTree(object)) {
    if (object->GetType() != host::Ocamera) continue;
    ++count;
    AddEntry(menu, Label(object->GetName()), {},
             [&view, camera = engine::IdOf(*object)] { view.LookThrough(camera); });
  }
  if (count == 0) menu.addAction("No cameras in this scene")->setEnabled(false);
}

void AddEntries(QMenu& menu, Viewport& view, const CameraCommands& acts) {
  AddPictureEntry(menu, "Frame &Selection", {QKeySequence("S"), QKeySequence("F")}, view,
                  [&view] { view.FrameSelection(); });
  AddPictureEntry(menu, "Frame &All", {QKeySequence("A"), QKeySequence("Home")}, view,
                  [&view] { view.FrameAll(); });
  menu.addSeparator();
  AddEntry(menu, "Look Through S&cene Camera", QKeySequence("Ctrl+K"),
           [&view] { view.LookThroughSceneCamera(); });
  AddEntry(menu, "Look Through &Editor Camera", QKeySequence("Ctrl+Shift+K"),
           [&view] { view.LookThroughEditorCamera(); });
  QMenu* cameras = menu.addMenu("&Look Through");
  QObject::connect(cameras, &QMenu::aboutToShow, cameras,
                   [cameras, &view] { FillCameraMenu(*cameras, view); });
  menu.addSeparator();
  menu.addActions(acts.ForCameras());
}

void AddSwitch(QMenu& menu, host::BaseDocument& doc, const QString& text, engine::Switch which) {
  constexpr std::pair<const char*, host::LONG> kModes[] = {
      {"On", host::MODE_ON}, {"Off", host::MODE_OFF}, {"Undefined", host::MODE_UNDEF}};
  QMenu* modes = menu.addMenu(text);
  for (const auto& [name, mode] : kModes) {
    QAction* action = AddEntry(*modes, name, {}, [which, mode = mode] {
      if (host::BaseDocument* active = host::GetActiveDocument())
        RunEdit(*active, engine::SetSwitch(*active, engine::SelectedObjects(*active), which, mode));
    });
    action->setCheckable(true);
    action->setChecked(engine::SwitchOf(*doc.GetActiveObject(), which) == mode);
  }
}

// The menu of the picture is the View menu, what can be made, and what goes for objects: the same
// actions, so that keys and states are theirs.
void FillContextMenu(QMenu& menu, const QMenu& view, QMenu& create, const EditMenu& edit) {
  for (QAction* action : view.actions()) {
    // How the program looks is nothing of the picture.
    const bool isLook = action->menu() && action->text().remove('&') == "Appearance";
    if (!isLook) menu.addAction(action);
  }
  menu.addSeparator();
  menu.addMenu(&create);
  menu.addSeparator();
  host::BaseDocument* doc = host::GetActiveDocument();
  if (doc && doc->GetActiveObject()) {
    AddSwitch(menu, *doc, "Visible in &Editor", engine::Switch::kEditor);
    AddSwitch(menu, *doc, "Visible in &Renders", engine::Switch::kRender);
    menu.addSeparator();
  }
  menu.addActions(edit.ForObjects());
}

}  // namespace

void BuildViewMenu(QMenu& menu, QMenu& create, MainWindow& window) {
  Viewport& view = window.View();
  AddEntries(menu, view, window.Cameras());
  view.fillMenu = [&menu, &create, &window](QMenu& context) {
    FillContextMenu(context, menu, create, window.Edit());
  };
}

}  // namespace desktop
