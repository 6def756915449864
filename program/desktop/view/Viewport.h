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
  Viewport(engine::FileSystem& files, QWidget* parent);

  void Follow(host::BaseDocument* doc) override;
  // Reads the scene again although it has not changed, since files that it uses have.
  void ReadAgain();
  // Move the editor camera, as it is turned, so that it shows this; without a selection
  // FrameSelection shows all.
  void FrameAll();
  void FrameSelection();
  // Back to the scene camera, or to a view of everything where there is none.
  void LookThroughSceneCamera();
  // Starts at the present point of view.
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
  void SwitchDocument(const host::BaseDocument* doc);
  // Takes over a scene that was read; asks for a picture only where it looks different.
  void TakeScene(engine::ScenePicture scene);
  // Takes over which instances are selected, and outlines them in the picture that is shown.
  void TakeSelection(std::vector<std::uint8_t> selected);
  // A rough picture now or when the one being made is done, then the fine one when nothing moves
  // any more.
  void Refresh();
  // Sends an order to the worker: a rough picture, or the finest one.
  void Begin(bool draft);
  // Forgets picture and scene, for another document.
  void DropPicture();
  // Shows a pass of the worker; called on the main thread.
  void ShowPass(const PicturePass& pass);
  // After framing, and where there is no camera yet.
  void TakeCameraOf(const PicturePass& pass);
  // Asks for a picture that shows all of this.
  void Frame(Framing framing);
  // Nothing: a camera that frames everything is made.
  std::optional<engine::PictureCamera> PresentCamera() const;
  // Looks through the editor camera from now on, which begins where one looks from now.
  EditorCamera& Editor();
  // The camera that a gesture moves, the editor camera or one that flies; ApplyMove follows.
  EditorCamera& MovedCamera();
  // Puts a flying camera where the gesture has brought it, and asks for a picture.
  void ApplyMove();
  // Ends a gesture: the next one is an undo step of its own.
  void Land();
  // Moves the camera object; that alone is no reason to read the scene again.
  void MoveFlyingCamera(host::BaseObject& camera, const engine::PictureCamera& view);
  // Looks through the scene camera that was set.
  void ShowSceneCamera();
  // Stays where it is when the camera that was looked through is gone.
  void KeepViewWithoutCamera();
  // Tells the document from where it is looked at, for recordings and pictures without a scene
  // camera.
  void StoreEditorView();
  // Brings the notice in step with the cameras.
  void ShowNotice();
  // Null when the document is closed or empty.
  const host::BaseDocument* Shown() const;
  // Whether the object that is shown at that place is selected.
  bool IsSelectedAt(QPoint place) const;
  // The pixel of the map of hits at a place of the widget; {-1, -1} where there is none.
  QPoint PixelAt(QPointF place) const;
  // The center of an orbit that begins at that place: the point seen there, else the selection, or
  // what was looked at before.
  std::optional<host::Vector> PointToGoAround(QPointF place) const;
  std::optional<host::Vector> MiddleOfSelection() const;
  // Comes nearer by a factor below 1; what is seen at that place stays there.
  void ZoomAt(QPointF place, double factor);
  // By pixels of the widget.
  void DragBy(QPointF way, bool slides);
  // Tells `picked` of the object at that place.
  void Pick(QPointF place, Qt::KeyboardModifiers keys);
  // A text in place of a picture: why there is none.
  void PaintEmptyText(QPainter& painter);

  engine::RenderCaches& caches_ = engine::RenderCaches::Shared();
  SceneFeed feed_;
  engine::NodeId doc_ = 0;
  std::unique_ptr<engine::ScenePicture> unsent_;  // not given to the worker yet
  std::uint64_t fingerprint_ = 0;                 // of the scene read last
  std::shared_ptr<const Marks> marks_;
  std::optional<engine::PictureCamera> sceneCamera_;
  std::optional<engine::PictureCamera> sentCamera_;  // of the last order
  std::map<host::ULLONG, ViewState> formerStates_;   // open documents that were shown before
  ViewSource source_ = ViewSource::Scene;
  engine::NodeId sourceObject_ = 0;
  std::optional<EditorCamera> editor_;
  host::ULLONG cameraSets_ = 0;         // of the document, when it was last looked at
  engine::NodeId recordedCamera_ = 0;   // its scene camera then
  engine::NodeId flyableCamera_ = 0;    // the camera that one lets fly
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
  // A rough picture is wanted as soon as the one that is being made is done.
  bool draftWanted_ = false;
  bool isDraft_ = false;
  bool finished_ = false;
  // Places in pixels of the widget; `draggedTo_` is the last one of a drag.
  QPointF pressedAt_;
  QPointF draggedTo_;
  // The center of the present orbit.
  std::optional<host::Vector> around_;
  // The mouse has moved far enough since the press to be no click.
  bool dragging_ = false;
  // Fires when nothing has moved for a while: time for the finest picture.
  QTimer idle_;
  PictureWorker worker_;  // last: it ends before what it tells of
};

}  // namespace desktop
