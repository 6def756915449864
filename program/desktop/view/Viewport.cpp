// The way of a picture: the document is read (SceneFeed), what looks different or is looked at from
// elsewhere asks for a picture (Refresh), first a rough one at once, and when nothing moves any
// more the fine one (Begin, on the worker); passes come back (ShowPass). Cameras: `source_` says
// which one is looked through; `lookedThrough_` is that of the picture on the screen, from which
// everything goes on.
#include "program/desktop/view/Viewport.h"

#include <QPainter>
#include <algorithm>
#include <cmath>

#include "engine/scene/NodeIds.h"
#include "engine/scene/NodeTypes.h"
#include "program/desktop/Text.h"
#include "program/desktop/view/Outline.h"

namespace desktop {

namespace {

// A hand that rests no longer than this goes on moving. Drafts have so many pixels that they keep
// up with it, and no picture more than the finest.
constexpr int kMillisecondsUntilIdle = 160;
constexpr int kDraftPixels = 480 * 320;
constexpr int kFinePixels = 2560 * 1440;

QSize Limited(QSize size, int pixels) {
  const double all = static_cast<double>(size.width()) * size.height();
  if (all > pixels) size *= std::sqrt(pixels / all);
  return size.expandedTo({1, 1});
}

bool IsSameCamera(const std::optional<engine::PictureCamera>& a,
                  const std::optional<engine::PictureCamera>& b) {
  if (!a || !b) return a.has_value() == b.has_value();
  return a->frame == b->frame && a->isParallel == b->isParallel && a->fov == b->fov &&
         a->fovVertical == b->fovVertical && a->width == b->width && a->near == b->near &&
         a->far == b->far;
}

const char* const kHelp =
    "Drag: go around. Shift+drag or middle button: slide. Wheel: come nearer.\n"
    "Click: choose, with Shift or Ctrl one more. S: frame the selection. A: frame all.\n"
    "Arrows: go around, with Shift slide. + and -: nearer and farther.";

}  // namespace

Viewport::Viewport(engine::FileSystem& files, QWidget* parent)
    : QWidget(parent),
      feed_(files, caches_, {.editorView = true},
            [this](engine::ScenePicture scene) { TakeScene(std::move(scene)); }),
      notice_(new CameraNotice(this)),
      worker_(caches_, [this](const PicturePass& pass) { ShowPass(pass); }) {
  setFocusPolicy(Qt::StrongFocus);
  setAttribute(Qt::WA_OpaquePaintEvent);
  setAccessibleName("Picture of the scene");
  setToolTip(kHelp);
  setToolTipDuration(6000);
  setAcceptDrops(true);
  idle_.setSingleShot(true);
  idle_.setInterval(kMillisecondsUntilIdle);
  connect(&idle_, &QTimer::timeout, this, [this] {
    if (!dragging_) Land();
    Begin(false);
  });
}

// How each document is looked at is kept until it is closed. Where its scene camera was set
// meanwhile, that counts.
void Viewport::SwitchDocument(const host::BaseDocument* doc) {
  Land();
  formerStates_[doc_] = {source_, sourceObject_, editor_, cameraSets_, recordedCamera_};
  std::erase_if(formerStates_, [](const auto& one) { return !FindOpenDocument(one.first); });
  doc_ = IdentityOf(doc);
  cameraSets_ = doc ? engine::SceneCameraSetCount(*doc) : 0;
  recordedCamera_ = doc ? engine::SceneCameraIdOf(*doc) : 0;
  const auto found = formerStates_.find(doc_);
  const ViewState state = found != formerStates_.end() ? found->second : ViewState{};
  editor_ = state.editor;
  sourceObject_ = state.sourceObject;
  source_ = state.cameraSets == cameraSets_ && state.recordedCamera == recordedCamera_
                ? state.source
                : ViewSource::Scene;
  flyableCamera_ = 0;
  framing_ = Framing::None;
  DropPicture();
  finished_ = false;
}

// Setting the same camera again counts, too (decision 21).
void Viewport::Follow(host::BaseDocument* doc) {
  if (IdentityOf(doc) != doc_) SwitchDocument(doc);
  if (doc && (engine::SceneCameraSetCount(*doc) != cameraSets_ ||
              engine::SceneCameraIdOf(*doc) != recordedCamera_)) {
    ShowSceneCamera();
  }
  feed_.Follow(doc);
  ShowNotice();
}

// A camera that was set is seen at once; with none set one looks with the editor camera, from where
// it was left.
void Viewport::ShowSceneCamera() {
  const host::BaseDocument& doc = *FindOpenDocument(doc_);
  cameraSets_ = engine::SceneCameraSetCount(doc);
  recordedCamera_ = engine::SceneCameraIdOf(doc);
  const host::BaseObject* camera = doc.GetRenderBaseDraw()->GetSceneCamera(&doc);
  sceneCamera_ = camera ? engine::CameraOf(*camera) : std::nullopt;
  if (!sceneCamera_ && !editor_) KeepViewWithoutCamera();
  source_ = ViewSource::Scene;
  framing_ = Framing::None;
  Refresh();
}

void Viewport::KeepViewWithoutCamera() {
  if (!picture_.isNull()) editor_.emplace(lookedThrough_, bounds_);
}

void Viewport::ReadAgain() {
  // A file read anew may lie where the former one lay: then the scene would look the same.
  if (fingerprint_ != 0) fingerprint_ = ~fingerprint_;
  feed_.Forget();
}

// An order without a size frees the scene that the worker holds.
void Viewport::DropPicture() {
  worker_.Work({});
  idle_.stop();
  unsent_.reset();
  fingerprint_ = 0;
  picture_ = outline_ = QImage();
  hits_.reset();
  problem_.clear();
  update();
}

// The fingerprint tells whether the scene looks different at all: renaming an object renders
// nothing. When the camera that was looked through is gone the view stays where it was.
void Viewport::TakeScene(engine::ScenePicture scene) {
  const bool isFirst = fingerprint_ == 0;
  const bool looksNew = isFirst || scene.fingerprint != fingerprint_;
  const bool hadCamera =
      source_ == ViewSource::Scene ? sceneCamera_.has_value() : source_ == ViewSource::Object;
  sceneCamera_ = scene.hasSceneCamera ? std::optional(scene.camera) : std::nullopt;
  if (hadCamera && !CameraObject()) KeepViewWithoutCamera();
  const bool moved = !IsSameCamera(PresentCamera(), sentCamera_);
  TakeSelection(scene.selected);
  if (looksNew) {
    fingerprint_ = scene.fingerprint;
    unsent_ = std::make_unique<engine::ScenePicture>(std::move(scene));
  }
  if (looksNew || moved) Refresh();
  update();
}

// Drawn over the picture that is there; nothing is rendered for a selection.
void Viewport::TakeSelection(std::vector<std::uint8_t> selected) {
  if (marks_ && *marks_ == selected) return;
  marks_ = std::make_shared<const Marks>(std::move(selected));
  if (hits_ && hits_->objects->size() == marks_->size())
    outline_ = OutlineImage(*hits_, *marks_, devicePixelRatioF());
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
  source_ = ViewSource::Scene;
  editor_.reset();
  framing_ = Framing::None;
  Refresh();
}

void Viewport::LookThroughEditorCamera() {
  if (Shown()) Editor();
  Refresh();
}

// Null also where the object that was looked through is gone or is no camera.
host::BaseObject* Viewport::CameraObject() const {
  host::BaseDocument* doc = FindOpenDocument(doc_);
  if (!doc || source_ == ViewSource::Editor) return nullptr;
  host::BaseObject* camera = source_ == ViewSource::Scene
                                 ? doc->GetRenderBaseDraw()->GetSceneCamera(doc)
                                 : engine::AsObject(engine::FindNode(doc, sourceObject_));
  return camera && engine::CameraOf(*camera) ? camera : nullptr;
}

void Viewport::LetFly(bool flies) {
  Land();
  const host::BaseObject* camera = CameraObject();
  flyableCamera_ = flies && camera && WhyFixed(*camera).empty() ? engine::IdOf(*camera) : 0;
  ShowNotice();
}

// Asked each time, since its layer may have been locked meanwhile.
bool Viewport::Flies() const {
  const host::BaseObject* camera = flyableCamera_ != 0 ? CameraObject() : nullptr;
  return camera && engine::IdOf(*camera) == flyableCamera_ && WhyFixed(*camera).empty();
}

void Viewport::LookThrough(engine::NodeId camera) {
  source_ = ViewSource::Object;
  sourceObject_ = camera;
  framing_ = Framing::None;
  Refresh();
}

QString Viewport::CameraName() const {
  const host::BaseObject* camera = Shown() ? CameraObject() : nullptr;
  if (!camera) return "Editor camera";
  const host::BaseDocument& doc = *camera->GetDocument();
  const bool isScenes = doc.GetRenderBaseDraw()->GetSceneCamera(&doc) == camera;
  return (isScenes ? "Scene camera: " : "Camera: ") + ToQt(camera->GetName());
}

void Viewport::ShowNotice() {
  const host::BaseDocument* doc = picture_.isNull() ? nullptr : Shown();
  const host::BaseObject* camera = doc ? CameraObject() : nullptr;
  if (!camera || engine::IdOf(*camera) != flyableCamera_) flyableCamera_ = 0;
  CameraNotice::State state;
  if (doc) {
    const host::BaseObject* recorded = doc->GetRenderBaseDraw()->GetSceneCamera(doc);
    state.seen = CameraName();
    if (!camera || camera != recorded)
      state.recorded = recorded ? ToQt(recorded->GetName()) : QString("no camera");
    state.throughCamera = camera != nullptr;
  }
  notice_->Show(state);
}

// No change of the document: it is neither undone nor saved.
void Viewport::StoreEditorView() {
  host::BaseDocument* doc = FindOpenDocument(doc_);
  if (!doc || size().isEmpty() || picture_.isNull()) return;
  engine::SetEditorView(*doc, engine::EditorView{PresentCamera().value_or(lookedThrough_),
                                                 static_cast<double>(width()) / height()});
}

const host::BaseDocument* Viewport::Shown() const {
  const host::BaseDocument* doc = FindOpenDocument(doc_);
  return doc && doc->GetFirstObject() ? doc : nullptr;
}

std::optional<engine::PictureCamera> Viewport::PresentCamera() const {
  if (source_ == ViewSource::Scene && sceneCamera_) return sceneCamera_;
  if (source_ == ViewSource::Object) {
    const host::BaseObject* object =
        engine::AsObject(engine::FindNode(FindOpenDocument(doc_), sourceObject_));
    const auto camera = object ? engine::CameraOf(*object) : std::nullopt;
    if (camera) return camera;
  }
  return editor_ ? std::optional(editor_->Camera()) : std::nullopt;
}

// Begins from the picture that is seen, whichever camera made it.
EditorCamera& Viewport::Editor() {
  if (source_ != ViewSource::Editor) editor_.emplace(lookedThrough_, bounds_);
  source_ = ViewSource::Editor;
  if (!editor_) editor_.emplace(lookedThrough_, bounds_);
  framing_ = Framing::None;
  return *editor_;
}

EditorCamera& Viewport::MovedCamera() {
  if (!Flies()) return Editor();
  const host::BaseObject& camera = *CameraObject();
  // Somebody else may have moved it since.
  if (flying_ && !flight_.GoesOn(*camera.GetDocument(), camera)) flying_.reset();
  if (!flying_) flying_.emplace(*engine::CameraOf(camera), bounds_, EditorCamera::Lean::Keep);
  return *flying_;
}

void Viewport::ApplyMove() {
  if (host::BaseObject* camera = flying_ && Flies() ? CameraObject() : nullptr)
    MoveFlyingCamera(*camera, flying_->Camera());
  Refresh();
}

// A camera without children is no part of the picture, so moving it needs no new reading.
void Viewport::MoveFlyingCamera(host::BaseObject& camera, const engine::PictureCamera& view) {
  host::BaseDocument& doc = *camera.GetDocument();
  const host::ULLONG before = engine::ChangeCount(doc);
  flight_.Move(doc, camera, view);
  if (!camera.GetDown()) feed_.TakeAsRead(doc, before);
  if (source_ == ViewSource::Scene) sceneCamera_ = engine::CameraOf(camera);
}

void Viewport::Land() {
  flying_.reset();
  flight_.Land();
}

// While a draft is being made the next one waits for it: replaced all the time, none would ever be
// finished during a drag.
void Viewport::Refresh() {
  finished_ = false;
  idle_.start();
  draftWanted_ = true;
  if (unsent_ || !(worker_.IsBusy() && isDraft_)) Begin(true);
  update();
}

// Framing goes on from the camera of the picture that is shown.
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
  order.camera = sentCamera_ = PresentCamera();
  StoreEditorView();
  if (framing_ != Framing::None && !picture_.isNull()) order.camera = lookedThrough_;
  order.draft = draft;
  order.marks = marks_;
  worker_.Work(std::move(order));
}

// The outline of the pass is of the selection that it was ordered with.
void Viewport::ShowPass(const PicturePass& pass) {
  problem_ = pass.problem;
  picture_ = pass.image;
  hits_ = pass.hits;
  outline_ = pass.outline;
  if (hits_ && marks_ != pass.marks) outline_ = OutlineImage(*hits_, *marks_, devicePixelRatioF());
  lookedThrough_ = pass.camera;
  bounds_ = pass.bounds;
  if (!pass.image.isNull()) TakeCameraOf(pass);
  finished_ = pass.isLast && !pass.isDraft && !draftWanted_ && !idle_.isActive();
  if (pass.isLast && draftWanted_) Begin(true);
  StoreEditorView();
  ShowNotice();
  update();
}

void Viewport::TakeCameraOf(const PicturePass& pass) {
  if (pass.framing != Framing::None) {
    // Once, not for each pass.
    if (framing_ == Framing::None) return;
    framing_ = Framing::None;
    if (Flies()) {
      Land();
      MoveFlyingCamera(*CameraObject(), pass.camera);
      Land();
    } else {
      source_ = ViewSource::Editor;
      editor_.emplace(pass.camera, pass.bounds);
    }
    sentCamera_ = PresentCamera();
  } else if (!PresentCamera() && !pass.bounds.IsEmpty()) {
    // The camera stays there from now on, whatever is shown and hidden.
    editor_.emplace(pass.camera, pass.bounds);
    sentCamera_ = PresentCamera();
  }
}

// {-1, -1} beside the picture and before there is one.
QPoint Viewport::PixelAt(QPointF place) const {
  if (!hits_ || !QRectF(rect()).contains(place)) return {-1, -1};
  return {static_cast<int>(place.x() / width() * hits_->width),
          static_cast<int>(place.y() / height() * hits_->height)};
}

engine::NodeId Viewport::ObjectAt(QPoint place) const {
  const QPoint pixel = PixelAt(place + QPointF(0.5, 0.5));
  if (pixel.x() < 0) return 0;
  return hits_->ObjectAt(static_cast<std::uint32_t>(pixel.x()),
                         static_cast<std::uint32_t>(pixel.y()));
}

void Viewport::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.fillRect(rect(), palette().color(QPalette::Window));
  if (picture_.isNull()) {
    PaintEmptyText(painter);
    return;
  }
  painter.setRenderHint(QPainter::SmoothPixmapTransform);
  painter.drawImage(rect(), picture_);
  if (!outline_.isNull()) painter.drawImage(rect(), outline_);
}

void Viewport::PaintEmptyText(QPainter& painter) {
  const QString hint = !problem_.isEmpty() ? problem_
                       : !Shown()          ? QString("Open a scene or drop a file here")
                                           : QString();
  painter.setPen(palette().color(QPalette::PlaceholderText));
  painter.drawText(rect().adjusted(20, 20, -20, -20), Qt::AlignCenter | Qt::TextWordWrap, hint);
}

void Viewport::resizeEvent(QResizeEvent*) {
  notice_->FitInto(size());
  Refresh();
}

}  // namespace desktop
