#include "program/desktop/menus/CameraCommands.h"

#include "engine/editing/ObjectCommands.h"
#include "engine/scene/NodeIds.h"
#include "program/desktop/MainWindow.h"
#include "program/desktop/Text.h"

namespace desktop {

using host::BaseDocument;
using host::BaseObject;

namespace {

BaseObject* SelectedCamera(const BaseDocument& doc) {
  BaseObject* object = doc.GetActiveObject();
  return object && object->GetType() == host::Ocamera ? object : nullptr;
}

constexpr const char* kMakeTip = "Recordings and renders look through it from now on.";
constexpr const char* kFlyTip =
    "Mouse and keys in the picture move this camera, not only the view.";

}  // namespace

// Some commands stand twice: in the menu of the window, with keys, and in that of the object rows,
// without. An action cannot be hidden in one menu and shown in another.
CameraCommands::CameraCommands(MainWindow& window)
    : QObject(&window),
      window_(window),
      newCamera_(Add("New Camera from &View", "A camera that sees what the picture shows.",
                     "Ctrl+Shift+C", [this](BaseDocument& doc) { AddNew(doc); })),
      lookThrough_(Add("Look Through Selecte&d Camera", "Shows what the selected camera sees.", "",
                       [this](BaseDocument& doc) { LookThrough(SelectedCamera(doc)); })),
      makeSceneCamera_(Add("&Make Scene Camera", kMakeTip, "Ctrl+Shift+M",
                           [this](BaseDocument& doc) {
                             BaseObject* selected = SelectedCamera(doc);
                             MakeScenes(doc, selected ? selected : window_.View().CameraObject());
                           })),
      fly_(Add("&Fly Camera", kFlyTip, "Ctrl+Shift+F",
               [this](BaseDocument&) { window_.View().LetFly(fly_->isChecked()); })),
      makeSeen_(Add("Make Scene Camera", kMakeTip, "",
                    [this](BaseDocument& doc) { MakeScenes(doc, window_.View().CameraObject()); })),
      rowLookThrough_(Add("Look &Through", "", "",
                          [this](BaseDocument& doc) { LookThrough(SelectedCamera(doc)); })),
      rowMakeSceneCamera_(Add("&Make Scene Camera", "", "", [this](BaseDocument& doc) {
        MakeScenes(doc, SelectedCamera(doc));
      })) {
  fly_->setCheckable(true);
  fly_->setIconText("Fly");
  newCamera_->setIconText("New Camera from View");
  window.View().Notice().SetActions(*fly_, *makeSeen_, *newCamera_);
  window.Objects().addActions({rowLookThrough_, rowMakeSceneCamera_});
}

// The document is asked for when the command is chosen: it may be another one by then.
template <class Command>
QAction* CameraCommands::Add(const QString& text, const QString& tip, const char* keys,
                             Command command) {
  auto* action = new QAction(text, &window_);
  action->setToolTip(tip);
  action->setShortcut(QKeySequence(keys));
  connect(action, &QAction::triggered, this, [command] {
    if (BaseDocument* doc = host::GetActiveDocument()) command(*doc);
  });
  return action;
}

// Looked through at once, so that the picture stays and the person sees through what he made.
void CameraCommands::AddNew(BaseDocument& doc) {
  const BaseObject* camera = engine::AddCamera(doc, window_.View().Camera());
  window_.View().LookThrough(engine::IdOf(*camera));
}

void CameraCommands::LookThrough(BaseObject* camera) {
  if (camera) window_.View().LookThrough(engine::IdOf(*camera));
}

void CameraCommands::MakeScenes(BaseDocument& doc, BaseObject* camera) {
  if (camera) engine::MakeSceneCamera(doc, *camera);
}

// A command that cannot be carried out says why in its tip.
void CameraCommands::Follow(BaseDocument* doc) {
  const BaseObject* selected = doc ? SelectedCamera(*doc) : nullptr;
  const BaseObject* seen = doc ? window_.View().CameraObject() : nullptr;
  const std::string fixed =
      seen ? WhyFixed(*seen) : "Only a camera of the scene can fly. Look through one first.";
  newCamera_->setEnabled(doc != nullptr);
  lookThrough_->setEnabled(selected);
  makeSceneCamera_->setEnabled(selected || seen);
  for (QAction* action : {rowLookThrough_, rowMakeSceneCamera_}) action->setVisible(selected);
  fly_->setEnabled(fixed.empty());
  fly_->setChecked(window_.View().Flies());
  fly_->setToolTip(fixed.empty() ? QString(kFlyTip) : ToQt(fixed));
}

}  // namespace desktop
