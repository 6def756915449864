#include "program/desktop/view/Viewport.h"

#include <QPainter>
#include <algorithm>
#include <cmath>

#include "engine/scene/Nodes.h"
#include "program/desktop/Text.h"
#include "program/desktop/view/Outline.h"

namespace desktop {

namespace {

constexpr int kMillisecondsOfCalm = 160;
constexpr int kDraftPixels = 480 * 320;
constexpr int kFinePixels = 2560 * 1440;

QSize Limited(QSize size, int pixels) {
  const double all = static_cast<double>(size.width()) * size.height();
  if (all > pixels) size *= std::sqrt(pixels / all);
  return size.expandedTo({1, 1});
}

bool IsSameCamera(const std::optional<engine::PictureCamera>& a, const std::optional<engine::PictureCamera>& b) {
  if (!a || !b) return a.has_value() == b.has_value();
  return a->frame == b->frame && a->isParallel == b->isParallel && a->fov == b->fov && a->fovVertical == b->fovVertical &&
         a->width == b->width && a->near == b->near && a->far == b->far;
}

const char* const kHelp =
    "Drag: go around. Shift+drag or middle button: slide. Wheel: come nearer.\n"
    "Click: choose, with Shift or Ctrl one more. S: frame the selection. A: frame all.\n"
    "Arrows: go around, with Shift slide. + and -: nearer and farther.";

}  // namespace

Viewport::Viewport(QWidget* parent)
    : QWidget(parent),
      feed_(caches_, {.editorView = true}, [this](engine::ScenePicture scene) { TakeScene(std::move(scene)); }),
      worker_(caches_, [this](const PicturePass& pass) { Passed(pass); }) {
  setFocusPolicy(Qt::StrongFocus);
  setAttribute(Qt::WA_OpaquePaintEvent);
  setAccessibleName("Picture of the scene");
  setToolTip(kHelp);
  setToolTipDuration(6000);
  calm_.setSingleShot(true);
  calm_.setInterval(kMillisecondsOfCalm);
  connect(&calm_, &QTimer::timeout, this, [this] { Begin(false); });
}

void Viewport::Follow(host::BaseDocument* doc) {
  if (IdentityOf(doc) != doc_) {
    doc_ = IdentityOf(doc);
    editor_.reset();
    eye_ = Eye::Scene;
    framing_ = Framing::None;
    DropPicture();
    finished_ = false;
  }
  feed_.Follow(doc);
}

void Viewport::ReadAgain() {
  // A file read anew may lie where the former one lay: then the scene would look the same.
  if (fingerprint_ != 0) fingerprint_ = ~fingerprint_;
  feed_.Forget();
}

void Viewport::DropPicture() {
  worker_.Work({});
  calm_.stop();
  unsent_.reset();
  fingerprint_ = 0;
  picture_ = outline_ = QImage();
  hits_.reset();
  problem_.clear();
  update();
}

void Viewport::TakeScene(engine::ScenePicture scene) {
  const bool isFirst = fingerprint_ == 0;
  const bool looksNew = isFirst || scene.fingerprint != fingerprint_;
  sceneCamera_ = scene.hasSceneCamera ? std::optional(scene.camera) : std::nullopt;
  const bool moved = !IsSameCamera(EyeCamera(), sentCamera_);
  TakeMarks(scene.selected);
  if (looksNew) {
    fingerprint_ = scene.fingerprint;
    unsent_ = std::make_unique<engine::ScenePicture>(std::move(scene));
  }
  if (looksNew || moved) Refresh();
  update();
}

void Viewport::TakeMarks(std::vector<std::uint8_t> selected) {
  if (marks_ && *marks_ == selected) return;
  marks_ = std::make_shared<const Marks>(std::move(selected));
  if (hits_ && hits_->objects->size() == marks_->size()) outline_ = OutlineImage(*hits_, *marks_, devicePixelRatioF());
}

void Viewport::Frame(Framing framing) {
  if (!Shown()) return;
  framing_ = framing;
  Refresh();
}

void Viewport::FrameAll() { Frame(Framing::All); }

void Viewport::FrameSelection() {
  const bool any = marks_ && std::find(marks_->begin(), marks_->end(), 1) != marks_->end();
  Frame(any ? Framing::Selection : Framing::All);
}

void Viewport::LookThroughSceneCamera() {
  eye_ = Eye::Scene;
  editor_.reset();
  framing_ = Framing::None;
  Refresh();
}

void Viewport::LookThroughEditorCamera() {
  if (Shown()) Editor();
  Refresh();
}

void Viewport::LookThrough(engine::NodeId camera) {
  eye_ = Eye::Object;
  eyeObject_ = camera;
  framing_ = Framing::None;
  Refresh();
}

QString Viewport::EyeName() const {
  const host::BaseDocument* doc = Shown();
  if (doc && eye_ == Eye::Scene && sceneCamera_) {
    const host::BaseObject* camera = doc->GetRenderBaseDraw()->GetSceneCamera(doc);
    return "Scene camera: " + (camera ? ToQt(camera->GetName()) : QString());
  }
  const host::BaseList2D* camera = eye_ == Eye::Object ? engine::FindNode(doc, eyeObject_) : nullptr;
  return camera ? "Camera: " + ToQt(camera->GetName()) : QString("Editor camera");
}

const host::BaseDocument* Viewport::Shown() const {
  const host::BaseDocument* doc = FindOpenDocument(doc_);
  return doc && doc->GetFirstObject() ? doc : nullptr;
}

std::optional<engine::PictureCamera> Viewport::EyeCamera() const {
  if (eye_ == Eye::Scene && sceneCamera_) return sceneCamera_;
  if (eye_ == Eye::Object) {
    const host::BaseObject* object = engine::AsObject(engine::FindNode(FindOpenDocument(doc_), eyeObject_));
    const auto camera = object ? engine::CameraOf(*object) : std::nullopt;
    if (camera) return camera;
  }
  return editor_ ? std::optional(editor_->Camera()) : std::nullopt;
}

EditorCamera& Viewport::Editor() {
  if (eye_ != Eye::Editor) editor_.emplace(lookedThrough_, bounds_);
  eye_ = Eye::Editor;
  if (!editor_) editor_.emplace(lookedThrough_, bounds_);
  framing_ = Framing::None;
  return *editor_;
}

void Viewport::Refresh() {
  finished_ = false;
  calm_.start();
  draftWanted_ = true;
  if (unsent_ || !(worker_.IsBusy() && isDraft_)) Begin(true);
  update();
}

void Viewport::Begin(bool draft) {
  draftWanted_ = false;
  if (!Shown()) {
    DropPicture();
    finished_ = true;
  }
  if (!Shown() || size().isEmpty()) return;
  isDraft_ = draft;
  PictureOrder order;
  order.scene = std::move(unsent_);
  order.hits = Limited(size() * devicePixelRatioF(), kFinePixels);
  order.size = draft ? Limited(order.hits, kDraftPixels) : order.hits;
  order.scale = devicePixelRatioF();
  order.framing = framing_;
  order.camera = sentCamera_ = EyeCamera();
  if (framing_ != Framing::None && !picture_.isNull()) order.camera = lookedThrough_;
  order.draft = draft;
  order.marks = marks_;
  worker_.Work(std::move(order));
}

void Viewport::Passed(const PicturePass& pass) {
  problem_ = pass.problem;
  picture_ = pass.image;
  hits_ = pass.hits;
  outline_ = pass.outline;
  if (hits_ && marks_ != pass.marks) outline_ = OutlineImage(*hits_, *marks_, devicePixelRatioF());
  lookedThrough_ = pass.camera;
  bounds_ = pass.bounds;
  if (pass.framing != Framing::None) {
    eye_ = Eye::Editor;
    editor_.emplace(pass.camera, pass.bounds);
    framing_ = Framing::None;
    sentCamera_ = EyeCamera();
  } else if (!EyeCamera() && !pass.bounds.IsEmpty()) {
    // From now on it stays where it is, whatever is shown and hidden.
    editor_.emplace(pass.camera, pass.bounds);
    sentCamera_ = EyeCamera();
  }
  finished_ = pass.isLast && !pass.isDraft && !draftWanted_ && !calm_.isActive();
  if (pass.isLast && draftWanted_) Begin(true);
  update();
}

QPoint Viewport::PixelAt(QPointF place) const {
  if (!hits_ || !QRectF(rect()).contains(place)) return {-1, -1};
  return {static_cast<int>(place.x() / width() * hits_->width), static_cast<int>(place.y() / height() * hits_->height)};
}

engine::NodeId Viewport::ObjectAt(QPoint place) const {
  const QPoint pixel = PixelAt(place + QPointF(0.5, 0.5));
  if (pixel.x() < 0) return 0;
  return hits_->ObjectAt(static_cast<std::uint32_t>(pixel.x()), static_cast<std::uint32_t>(pixel.y()));
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
  if (!outline_.isNull()) painter.drawImage(rect(), outline_);
  PaintEyeName(painter);
}

void Viewport::PaintHint(QPainter& painter) {
  const QString hint = !problem_.isEmpty() ? problem_ : !Shown() ? QString("Open a scene or drop a file here") : QString();
  painter.setPen(palette().color(QPalette::PlaceholderText));
  painter.drawText(rect().adjusted(20, 20, -20, -20), Qt::AlignCenter | Qt::TextWordWrap, hint);
}

void Viewport::PaintEyeName(QPainter& painter) {
  constexpr int kMargin = 10;
  const QString name = fontMetrics().elidedText(EyeName(), Qt::ElideRight, width() - 5 * kMargin);
  const QRect text = fontMetrics().boundingRect(name);
  const QRect plate(kMargin, kMargin, text.width() + 2 * kMargin, fontMetrics().height() + kMargin);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.setBrush(QColor(24, 24, 24, 150));
  painter.drawRoundedRect(plate, 4, 4);
  painter.setPen(QColor(0xdc, 0xdc, 0xdc));
  painter.drawText(plate, Qt::AlignCenter, name);
}

void Viewport::resizeEvent(QResizeEvent*) { Refresh(); }

}  // namespace desktop
