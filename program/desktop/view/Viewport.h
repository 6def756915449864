// Viewport: the ray-traced picture of the active document, what is selected outlined: a rough one
// while something moves, then finer and finer ones. One drags to go around, with Shift or the
// middle button to slide, turns the wheel to come nearer, clicks to choose an object. It looks
// through the scene camera until one moves, then through the editor camera, or through any camera
// of the scene; whoever sets the scene camera makes it look through that again. A camera that is
// let fly is moved itself. A material dropped onto an object is given to it. Clicks are answered
// from the picture that is shown. It owns nothing of the document; it leaves with it how it is
// looked at, for pictures without a scene camera. Main thread.
#pragma once

#include <QMenu>
#include <QTimer>
#include <QWidget>
#include <map>
#include <optional>

#include "program/desktop/panels/DocumentView.h"
#include "program/desktop/view/CameraFlight.h"
#include "program/desktop/view/CameraNotice.h"
#include "program/desktop/view/EditorCamera.h"
#include "program/desktop/view/PictureWorker.h"
#include "program/desktop/view/SceneFeed.h"

namespace desktop {

class Viewport : public QWidget, public DocumentView {
 public:
  explicit Viewport(QWidget* parent);

  void Follow(host::BaseDocument* doc) override;
  // Reads the scene again although it has not changed, since files that it uses have.
  void ReadAgain();
  // Move the editor camera, as it is turned, so that it shows this; without a selection
  // FrameSelection shows all.
  void FrameAll();
  void FrameSelection();
  // Back to the scene camera, or to a view of everything where there is none.
  void LookThroughSceneCamera();
  // From where the picture is seen now.
  void LookThroughEditorCamera();
  // A camera object of the document.
  void LookThrough(engine::NodeId camera);
  bool LooksThroughEditorCamera() const { return source_ == ViewSource::Editor; }
  // The camera of the scene that is looked through; null for the editor camera.
  host::BaseObject* CameraObject() const;
  // Lets mouse and keys move the camera that is looked through, each gesture as one undo step,
  // until one looks elsewhere.
  void LetFly(bool flies);
  bool Flies() const;
  // Says in the picture which camera is looked through and which one is recorded.
  CameraNotice& Notice() { return *notice_; }
  // "Scene camera: NAME", "Camera: NAME" or "Editor camera".
  QString CameraName() const;

  // How a click changes the selection.
  enum class Picking { Replace, Add, Toggle };
  // Told of the object that was clicked on, 0 for none.
  std::function<void(engine::NodeId, Picking)> picked;
  // Adds to the menu of the right button.
  std::function<void(QMenu&)> fillMenu;

  // The object that is shown at a place of the widget, 0 for none.
  engine::NodeId ObjectAt(QPoint place) const;
  const QImage& Picture() const { return picture_; }
  // The line around what is selected; null where nothing of it is seen.
  const QImage& Outline() const { return outline_; }
  // The camera of the picture that is shown.
  const engine::PictureCamera& Camera() const { return lookedThrough_; }
  // Whether the finest picture of the present state is shown.
  bool IsFinished() const { return finished_ && !feed_.IsReading(); }
  QSize sizeHint() const override { return {640, 480}; }
  QSize minimumSizeHint() const override { return {120, 90}; }

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  // Materials are dropped onto objects; drags of other things are left to whoever is below.
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dragMoveEvent(QDragMoveEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  // The camera that is looked through: the scene camera, the editor camera, or a camera object.
  enum class ViewSource { Scene, Editor, Object };
  // How a document is looked at.
  struct ViewState {
    ViewSource source = ViewSource::Scene;
    engine::NodeId sourceObject = 0;
    std::optional<EditorCamera> editor;
    host::ULLONG cameraSets = 0;
    engine::NodeId recordedCamera = 0;
  };

  // Comes back to how it was looked at, unless somebody has set its scene camera since.
  void TurnTo(const host::BaseDocument* doc);
  void TakeScene(engine::ScenePicture scene);
  void TakeMarks(std::vector<std::uint8_t> selected);
  // A rough picture now or when the one being made is done, then the fine one when nothing moves
  // any more.
  void Refresh();
  void Begin(bool draft);
  void DropPicture();
  void Passed(const PicturePass& pass);
  // After framing, and where there is no camera yet.
  void StandWhereItWasSeenFrom(const PicturePass& pass);
  void Frame(Framing framing);
  // Nothing: a camera that frames everything is made.
  std::optional<engine::PictureCamera> PresentCamera() const;
  EditorCamera& Editor();
  // What a gesture moves, the editor camera or one that flies; Moved takes it from there.
  EditorCamera& Moving();
  void Moved();
  void Land();
  void PutFlying(host::BaseObject& camera, const engine::PictureCamera& view);
  void ShowSceneCamera();
  // Stays where it is when the camera that was looked through is gone.
  void StayWithoutCamera();
  void LeaveViewWithDocument();
  void ShowNotice();
  // Null when the document is closed or empty.
  const host::BaseDocument* Shown() const;
  bool IsSelectedAt(QPoint place) const;
  QPoint PixelAt(QPointF place) const;
  // What to go around when the hand is at that place: what is seen there, else the selection, else
  // what was looked at before.
  std::optional<host::Vector> PointToGoAround(QPointF place) const;
  std::optional<host::Vector> MiddleOfSelection() const;
  void ZoomAt(QPointF place, double factor);
  void DragBy(QPointF way, bool slides);
  void Pick(QPointF place, Qt::KeyboardModifiers keys);
  void PaintHint(QPainter& painter);

  engine::RenderCaches& caches_ = engine::RenderCaches::Shared();
  SceneFeed feed_;
  engine::NodeId doc_ = 0;
  std::unique_ptr<engine::ScenePicture> unsent_;  // not given to the worker yet
  std::uint64_t fingerprint_ = 0;                 // of the scene read last
  std::shared_ptr<const Marks> marks_;
  std::optional<engine::PictureCamera> sceneCamera_;
  std::optional<engine::PictureCamera> sentCamera_;  // of the last order
  std::map<host::ULLONG, ViewState> left_;           // open documents that were shown before
  ViewSource source_ = ViewSource::Scene;
  engine::NodeId sourceObject_ = 0;
  std::optional<EditorCamera> editor_;
  host::ULLONG cameraSets_ = 0;         // of the document, when it was last looked at
  engine::NodeId recordedCamera_ = 0;   // its scene camera then
  engine::NodeId mayFly_ = 0;           // the camera that one lets fly
  std::optional<EditorCamera> flying_;  // during a gesture
  CameraFlight flight_;
  CameraNotice* notice_;
  Framing framing_ = Framing::None;  // wanted
  engine::PictureCamera lookedThrough_;
  engine::Box bounds_;
  QImage picture_;
  QImage outline_;
  std::shared_ptr<const engine::HitMap> hits_;
  QString problem_;
  bool draftWanted_ = false;
  bool isDraft_ = false;
  bool finished_ = false;
  QPointF pressedAt_;
  QPointF draggedTo_;
  std::optional<host::Vector> around_;
  bool dragging_ = false;
  QTimer calm_;
  PictureWorker worker_;  // last: it ends before what it tells of
};

}  // namespace desktop
