#include "program/desktop/view/Viewport.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPainter>
#include <cmath>

#include "engine/scene/Nodes.h"
#include "program/desktop/Text.h"

namespace desktop {

namespace {

constexpr int kMillisecondsOfCalm = 160;
constexpr int kDraftPixels = 480 * 320;
constexpr int kFinePixels = 2560 * 1440;
constexpr double kRadiansPerPixel = 0.007;
constexpr double kZoomPerNotch = 0.88;
constexpr int kNotch = 120;

QSize Limited(QSize size, int pixels) {
  const double all = static_cast<double>(size.width()) * size.height();
  if (all > pixels) size *= std::sqrt(pixels / all);
  return size.expandedTo({1, 1});
}

}  // namespace

Viewport::Viewport(QWidget* parent) : QWidget(parent), worker_([this](const QImage& image, bool done) { Passed(image, done); }) {
  setFocusPolicy(Qt::StrongFocus);
  setAttribute(Qt::WA_OpaquePaintEvent);
  setToolTip("Drag: go around. Shift+drag or middle button: slide. Wheel: come nearer. Click: choose.");
  setToolTipDuration(4000);
  calm_.setSingleShot(true);
  calm_.setInterval(kMillisecondsOfCalm);
  connect(&calm_, &QTimer::timeout, this, [this] { Begin(false); });
}

void Viewport::Follow(host::BaseDocument* doc) {
  const host::ULLONG count = doc ? engine::ChangeCount(*doc) : 0;
  if (IdentityOf(doc) == doc_ && count == seen_) return;
  if (IdentityOf(doc) != doc_) {
    editor_.reset();
    picture_ = QImage();
  }
  doc_ = IdentityOf(doc);
  seen_ = count;
  Refresh();
}

void Viewport::FrameAll() {
  const host::BaseDocument* doc = Shown();
  if (!doc) return;
  const engine::ScenePicture scene = engine::ReadScene(*doc, {.editorView = true}, caches_);
  const double aspect = static_cast<double>(std::max(width(), 1)) / std::max(height(), 1);
  editor_.emplace(engine::FramingCamera(engine::OutlineOf(scene), aspect), scene.bounds);
  Refresh();
}

void Viewport::LookThroughSceneCamera() {
  editor_.reset();
  Refresh();
}

const host::BaseDocument* Viewport::Shown() const {
  const host::BaseDocument* doc = FindOpenDocument(doc_);
  return doc && doc->GetFirstObject() ? doc : nullptr;
}

EditorCamera& Viewport::Editor() {
  if (!editor_) editor_.emplace(lookedThrough_, bounds_);
  return *editor_;
}

void Viewport::Refresh() {
  finished_ = false;
  calm_.start();
  draftWanted_ = true;
  if (!(worker_.IsBusy() && isDraft_)) Begin(true);
  update();
}

void Viewport::Begin(bool draft) {
  if (!Shown() || size().isEmpty()) {
    worker_.Stop();
    picture_ = QImage();
    finished_ = true;
    return;
  }
  isDraft_ = draft;
  draftWanted_ = false;
  const QSize pixels = size() * devicePixelRatioF();
  if (auto picture = Make(Limited(pixels, draft ? kDraftPixels : kFinePixels), draft)) worker_.Work(std::move(picture));
}

std::unique_ptr<engine::PictureInProgress> Viewport::Make(QSize size, bool draft) {
  engine::PictureSetup setup;
  setup.width = static_cast<std::uint32_t>(size.width());
  setup.height = static_cast<std::uint32_t>(size.height());
  setup.reading.editorView = true;
  setup.draft = draft;
  if (editor_) setup.camera = editor_->Camera();
  auto made = engine::PictureInProgress::Begin(*Shown(), setup, caches_);
  problem_ = made ? QString() : ToQt(made.Message());
  if (!made) return nullptr;
  lookedThrough_ = made.Value()->Camera();
  bounds_ = made.Value()->Bounds();
  return made.Take();
}

void Viewport::Passed(const QImage& image, bool finished) {
  picture_ = image;
  finished_ = finished && !isDraft_;
  if (finished && draftWanted_) Begin(true);
  update();
}

void Viewport::Pick(QPointF place) {
  if (!Shown() || !picked) return;
  const auto picture = Make(size().expandedTo({1, 1}), true);
  if (!picture || !rect().contains(place.toPoint())) return;
  picked(picture->ObjectAt(static_cast<std::uint32_t>(place.x()), static_cast<std::uint32_t>(place.y())));
}

void Viewport::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.fillRect(rect(), palette().color(QPalette::Window));
  if (picture_.isNull()) {
    PaintHint(painter);
    return;
  }
  painter.setRenderHint(QPainter::SmoothPixmapTransform);
  painter.drawImage(rect(), picture_);
}

void Viewport::PaintHint(QPainter& painter) {
  const QString hint = !problem_.isEmpty() ? problem_
                       : !Shown()          ? QString("Open a scene: Ctrl+O, or drop a file here")
                                           : QString();
  painter.setPen(palette().color(QPalette::PlaceholderText));
  painter.drawText(rect().adjusted(20, 20, -20, -20), Qt::AlignCenter | Qt::TextWordWrap, hint);
}

void Viewport::resizeEvent(QResizeEvent*) { Refresh(); }

void Viewport::mousePressEvent(QMouseEvent* event) {
  pressedAt_ = draggedTo_ = event->position();
  dragging_ = false;
}

void Viewport::mouseMoveEvent(QMouseEvent* event) {
  if (event->buttons() == Qt::NoButton || !Shown()) return;
  if ((event->position() - pressedAt_).manhattanLength() >= QApplication::startDragDistance()) dragging_ = true;
  if (!dragging_) return;
  const QPointF way = event->position() - draggedTo_;
  draggedTo_ = event->position();
  if (event->buttons() & Qt::MiddleButton || event->modifiers() & Qt::ShiftModifier) {
    Editor().Slide(way.x() / width(), way.y() / width());
  } else {
    Editor().Orbit(way.x() * kRadiansPerPixel, -way.y() * kRadiansPerPixel);
  }
  Refresh();
}

void Viewport::mouseReleaseEvent(QMouseEvent* event) {
  if (!dragging_ && event->button() == Qt::LeftButton) Pick(event->position());
  dragging_ = false;
}

void Viewport::wheelEvent(QWheelEvent* event) {
  if (!Shown()) return;
  Editor().Zoom(std::pow(kZoomPerNotch, static_cast<double>(event->angleDelta().y()) / kNotch));
  Refresh();
}

}  // namespace desktop
