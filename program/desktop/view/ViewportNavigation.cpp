// Navigation in the viewport: mouse, wheel, keys and drops, and what they move.
#include <QApplication>
#include <QContextMenuEvent>
#include <QMouseEvent>
#include <cmath>

#include "engine/editing/MaterialCommands.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/NodeTypes.h"
#include "program/desktop/background/SlicedEdit.h"
#include "program/desktop/panels/DragAndDrop.h"
#include "program/desktop/view/Viewport.h"

namespace desktop {

namespace {

// 0.4 degrees a pixel and 5 a key; shares of the width, and of the distance.
constexpr double kRadiansPerPixel = 0.007;
constexpr double kRadiansPerKey = 0.0873;
constexpr double kSlidePerKey = 0.05;
constexpr double kDistancePerNotch = 0.88;
// Pixels that are looked at along each side when the middle of the selection is sought.
constexpr std::uint32_t kProbes = 160;

host::Vector ToHostVector(const engine::Vec& v) { return {v.x, v.y, v.z}; }

bool HasMaterial(const QDropEvent& event) { return event.mimeData()->hasFormat(kMaterialMime); }

}  // namespace

// Of what is seen of it, from the map of hits: exact enough to go around, and without a look at the
// scene. At most 160 x 160 pixels.
std::optional<host::Vector> Viewport::MiddleOfSelection() const {
  if (!hits_ || !marks_ || hits_->objects->size() != marks_->size()) return std::nullopt;
  engine::Box box;
  const std::uint32_t stepX = std::max(1U, hits_->width / kProbes);
  const std::uint32_t stepY = std::max(1U, hits_->height / kProbes);
  for (std::uint32_t y = 0; y < hits_->height; y += stepY) {
    for (std::uint32_t x = 0; x < hits_->width; x += stepX) {
      const std::uint32_t instance = hits_->instances[std::size_t{y} * hits_->width + x];
      if (instance > 0 && (*marks_)[instance - 1]) box.Add(*hits_->PointAt(x, y));
    }
  }
  return box.IsEmpty() ? std::nullopt : std::optional(ToHostVector(box.Center()));
}

// The surface under the pointer, else the selection, else the target of the camera.
std::optional<host::Vector> Viewport::PointToGoAround(QPointF place) const {
  const QPoint pixel = PixelAt(place);
  if (pixel.x() >= 0) {
    const auto point = hits_->PointAt(static_cast<std::uint32_t>(pixel.x()),
                                      static_cast<std::uint32_t>(pixel.y()));
    if (point) return ToHostVector(*point);
  }
  return MiddleOfSelection();
}

// The point is fixed for the whole drag, or the picture would swim.
void Viewport::mousePressEvent(QMouseEvent* event) {
  pressedAt_ = draggedTo_ = event->position();
  dragging_ = false;
  Land();
  around_ = PointToGoAround(pressedAt_);
}

// A click may tremble by a few pixels.
void Viewport::mouseMoveEvent(QMouseEvent* event) {
  if (event->buttons() == Qt::NoButton || !Shown()) return;
  if ((event->position() - pressedAt_).manhattanLength() >= QApplication::startDragDistance())
    dragging_ = true;
  if (!dragging_) return;
  const QPointF way = event->position() - draggedTo_;
  draggedTo_ = event->position();
  DragBy(way, event->buttons() & Qt::MiddleButton || event->modifiers() & Qt::ShiftModifier);
}

void Viewport::DragBy(QPointF way, bool slides) {
  if (slides) {
    MovedCamera().Slide(way.x() / width(), way.y() / width());
  } else {
    MovedCamera().Orbit(way.x() * kRadiansPerPixel, -way.y() * kRadiansPerPixel, around_);
  }
  ApplyMove();
}

void Viewport::mouseReleaseEvent(QMouseEvent* event) {
  if (!dragging_ && event->button() == Qt::LeftButton) Pick(event->position(), event->modifiers());
  dragging_ = false;
  Land();
}

void Viewport::Pick(QPointF place, Qt::KeyboardModifiers keys) {
  if (!Shown() || !picked || !rect().contains(place.toPoint())) return;
  const Picking how = keys & Qt::ControlModifier ? Picking::Toggle
                      : keys & Qt::ShiftModifier ? Picking::Add
                                                 : Picking::Replace;
  picked(ObjectAt(place.toPoint()), how);
}

void Viewport::wheelEvent(QWheelEvent* event) {
  if (!Shown()) return;
  ZoomAt(event->position(),
         std::pow(kDistancePerNotch,
                  event->angleDelta().y() / double{QWheelEvent::DefaultDeltasPerStep}));
}

// Towards the surface under the pointer, else to the depth of the target.
void Viewport::ZoomAt(QPointF place, double factor) {
  const QPoint pixel = PixelAt(place);
  EditorCamera& camera = MovedCamera();
  host::Vector toward =
      camera.PointAt(place.x() / width() - 0.5, place.y() / height() - 0.5,
                     static_cast<double>(std::max(width(), 1)) / std::max(height(), 1));
  if (pixel.x() >= 0) {
    const auto point = hits_->PointAt(static_cast<std::uint32_t>(pixel.x()),
                                      static_cast<std::uint32_t>(pixel.y()));
    if (point) toward = ToHostVector(*point);
  }
  camera.Zoom(factor, toward);
  ApplyMove();
}

void Viewport::keyPressEvent(QKeyEvent* event) {
  const bool slides = event->modifiers() & Qt::ShiftModifier;
  const auto go = [&](double right, double down) {
    if (slides) {
      MovedCamera().Slide(right * kSlidePerKey, down * kSlidePerKey);
    } else {
      MovedCamera().Orbit(right * kRadiansPerKey, -down * kRadiansPerKey, MiddleOfSelection());
    }
    ApplyMove();
  };
  if (!Shown()) return QWidget::keyPressEvent(event);
  switch (event->key()) {
    case Qt::Key_Left:
      return go(-1, 0);
    case Qt::Key_Right:
      return go(1, 0);
    case Qt::Key_Up:
      return go(0, -1);
    case Qt::Key_Down:
      return go(0, 1);
    case Qt::Key_Plus:
    case Qt::Key_Equal:
      return ZoomAt(rect().center(), kDistancePerNotch);
    case Qt::Key_Minus:
      return ZoomAt(rect().center(), 1 / kDistancePerNotch);
    default:
      return QWidget::keyPressEvent(event);
  }
}

// From the picture that is shown: marks of another scene fit no map.
bool Viewport::IsSelectedAt(QPoint place) const {
  const QPoint pixel = PixelAt(place);
  if (pixel.x() < 0 || !marks_ || hits_->objects->size() != marks_->size()) return false;
  const std::uint32_t instance =
      hits_->instances[static_cast<std::size_t>(pixel.y()) * hits_->width +
                       static_cast<std::size_t>(pixel.x())];
  return instance > 0 && (*marks_)[instance - 1];
}

// The object under the pointer is selected first: the menu works on the selection.
void Viewport::contextMenuEvent(QContextMenuEvent* event) {
  if (dragging_ || !Shown() || !fillMenu) return;
  const engine::NodeId object =
      event->reason() == QContextMenuEvent::Mouse ? ObjectAt(event->pos()) : 0;
  if (object != 0 && picked && !IsSelectedAt(event->pos())) picked(object, Picking::Replace);
  QMenu menu(this);
  fillMenu(menu);
  if (!menu.isEmpty()) menu.exec(event->globalPos());
}

// A material that comes in stays in, wherever it goes from there: a drag that is refused here would
// not be asked again.
void Viewport::dragEnterEvent(QDragEnterEvent* event) {
  if (!HasMaterial(*event)) return event->ignore();
  event->setDropAction(Qt::CopyAction);
  event->accept();
}

void Viewport::dragMoveEvent(QDragMoveEvent* event) {
  if (!HasMaterial(*event)) return event->ignore();
  event->setDropAction(Qt::CopyAction);
  event->setAccepted(ObjectAt(event->position().toPoint()) != 0);
}

void Viewport::dropEvent(QDropEvent* event) {
  if (!HasMaterial(*event)) return event->ignore();
  host::BaseDocument* doc = host::GetActiveDocument();
  const auto materials = DroppedNodes(event->mimeData(), kMaterialMime);
  host::BaseObject* object =
      engine::AsObject(engine::FindNode(doc, ObjectAt(event->position().toPoint())));
  event->setDropAction(Qt::CopyAction);
  auto* material =
      materials.empty() ? nullptr : engine::AsMaterial(engine::FindNode(doc, materials.front()));
  event->setAccepted(object && material);
  if (object && material) RunEdit(*doc, engine::AssignMaterial(*material, {object}));
}

}  // namespace desktop
