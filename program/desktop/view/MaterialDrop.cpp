#include "program/desktop/view/MaterialDrop.h"

#include "program/desktop/SceneCommands.h"
#include "program/desktop/panels/DragAndDrop.h"

namespace desktop {

namespace {

bool HasMaterial(const QDropEvent& event) { return event.mimeData()->hasFormat(kMaterialMime); }

}  // namespace

MaterialDrop::MaterialDrop(Viewport& view) : QObject(&view), view_(view) {
  view_.setAcceptDrops(true);
  view_.installEventFilter(this);
}

bool MaterialDrop::eventFilter(QObject*, QEvent* event) {
  if (event->type() != QEvent::DragEnter && event->type() != QEvent::DragMove &&
      event->type() != QEvent::Drop)
    return false;
  auto& drop = static_cast<QDropEvent&>(*event);
  if (!HasMaterial(drop)) {
    drop.ignore();
    return true;
  }
  if (event->type() == QEvent::DragEnter) Entered(drop);
  if (event->type() == QEvent::DragMove) Moved(drop);
  if (event->type() == QEvent::Drop) Dropped(drop);
  return true;
}

// What comes in stays in, wherever it goes from there.
void MaterialDrop::Entered(QDropEvent& event) {
  event.setDropAction(Qt::CopyAction);
  event.accept();
}

void MaterialDrop::Moved(QDropEvent& event) {
  event.setDropAction(Qt::CopyAction);
  event.setAccepted(view_.ObjectAt(event.position().toPoint()) != 0);
}

void MaterialDrop::Dropped(QDropEvent& event) {
  host::BaseDocument* doc = host::GetActiveDocument();
  const auto materials = DroppedNodes(event.mimeData(), kMaterialMime);
  host::BaseObject* object =
      engine::AsObject(engine::FindNode(doc, view_.ObjectAt(event.position().toPoint())));
  event.setDropAction(Qt::CopyAction);
  event.setAccepted(object && !materials.empty() &&
                    AssignMaterial(*doc, materials.front(), {object}));
}

}  // namespace desktop
