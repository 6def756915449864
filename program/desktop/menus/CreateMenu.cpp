#include "engine/editing/LayerCommands.h"
#include "engine/editing/MaterialCommands.h"
#include "engine/editing/ObjectCommands.h"
#include "program/desktop/Icons.h"
#include "program/desktop/MainWindow.h"
#include "program/desktop/menus/Menus.h"

namespace desktop {

namespace {

struct Form {
  const char* text;
  host::LONG type;
};
constexpr Form kForms[] = {{"&Cube", host::Ocube},        {"&Sphere", host::Osphere},
                           {"Cone", host::Ocone},         {"&Torus", host::Otorus},
                           {"&Disc", host::Odisc},        {"&Plane", host::Oplane},
                           {"C&ylinder", host::Ocylinder}};

// An entry that puts something into the active scene and shows it in the tree.
template <class Make>
QAction* AddMaker(QMenu& menu, MainWindow& window, const QString& text, const char* icon,
                  const char* keys, Make make) {
  QAction* action = AddEntry(menu, text, QKeySequence(keys), [&window, make] {
    host::BaseDocument* doc = host::GetActiveDocument();
    if (!doc) return;
    make(*doc);
    window.Inspected().Return(*doc, engine::InspectedElements::kObjects);
  });
  action->setIcon(Icon(icon));
  return action;
}

}  // namespace

void BuildCreateMenu(QMenu& menu, MainWindow& window) {
  // The action of the View menu, so that its key stands here, too.
  QAction& camera = window.Cameras().NewCamera();
  camera.setIcon(Icon("object-camera"));
  menu.addAction(&camera);
  AddMaker(menu, window, "&Light", "object-light", "Ctrl+Shift+L",
           [&window](host::BaseDocument& doc) { engine::AddLight(doc, window.View().Camera()); });
  AddMaker(menu, window, "&Null", "object-null", "Ctrl+Shift+N",
           [](host::BaseDocument& doc) { engine::AddObject(doc, host::Onull); });
  QMenu* forms = menu.addMenu(Icon("object-primitive"), "&Form");
  for (const Form& form : kForms) {
    AddMaker(*forms, window, form.text, "object-primitive", "",
             [type = form.type](host::BaseDocument& doc) { engine::AddObject(doc, type); });
  }
  menu.addSeparator();
  QAction* material = AddEntry(menu, "&Material", {}, [&window] {
    host::BaseDocument* doc = host::GetActiveDocument();
    if (!doc) return;
    engine::AddMaterial(*doc);
    window.Panels().Raise("materials");
  });
  material->setIcon(Icon("material"));
  QAction* layer = AddEntry(menu, "L&ayer", {}, [&window] {
    host::BaseDocument* doc = host::GetActiveDocument();
    if (!doc) return;
    engine::AddLayer(*doc);
    window.Panels().Raise("layers");
  });
  layer->setIcon(Icon("layer"));
  // The whole menu in the context menu of the objects.
  window.Objects().addAction(menu.menuAction());
}

}  // namespace desktop
