// Viewport: the ray-traced picture of the active document: a rough one while something moves, then finer and finer ones. One
// drags to go around, with Shift or the middle button to slide, turns the wheel to come nearer, clicks to choose an object. It
// looks through the scene camera until one moves, then through the editor camera. It owns nothing of the document. Main thread.
#pragma once

#include <QTimer>
#include <QWidget>
#include <optional>

#include "program/desktop/panels/DocumentView.h"
#include "program/desktop/view/EditorCamera.h"
#include "program/desktop/view/PictureWorker.h"

namespace desktop {

class Viewport : public QWidget, public DocumentView {
 public:
  explicit Viewport(QWidget* parent);

  void Follow(host::BaseDocument* doc) override;
  void FrameAll();
  // Back to the scene camera, or the framing of everything where there is none.
  void LookThroughSceneCamera();
  bool LooksThroughEditorCamera() const { return editor_.has_value(); }
  // Told of the object that was clicked on, 0 for none.
  std::function<void(engine::NodeId)> picked;

  const QImage& Picture() const { return picture_; }
  // Whether the finest picture of the present state is shown.
  bool IsFinished() const { return finished_; }
  QSize sizeHint() const override { return {640, 480}; }
  QSize minimumSizeHint() const override { return {120, 90}; }

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;

 private:
  // A rough picture now or when the one being made is done, then the fine one when nothing moves any more.
  void Refresh();
  void Begin(bool draft);
  std::unique_ptr<engine::PictureInProgress> Make(QSize size, bool draft);
  void Passed(const QImage& image, bool finished);
  EditorCamera& Editor();
  // Null when the document is closed or empty.
  const host::BaseDocument* Shown() const;
  void Pick(QPointF place);
  void PaintHint(QPainter& painter);

  engine::RenderCaches caches_;
  engine::NodeId doc_ = 0;
  host::ULLONG seen_ = 0;
  std::optional<EditorCamera> editor_;
  engine::PictureCamera lookedThrough_;
  engine::Box bounds_;
  QImage picture_;
  QString problem_;
  bool draftWanted_ = false;
  bool isDraft_ = false;
  bool finished_ = false;
  QPointF pressedAt_;
  QPointF draggedTo_;
  bool dragging_ = false;
  QTimer calm_;
  PictureWorker worker_;  // last: it ends before what it tells of
};

}  // namespace desktop
