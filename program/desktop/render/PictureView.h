// PictureView: a picture at any size: it fits into the widget or stands at a zoom of its own, where
// it can be dragged about. The wheel zooms at the cursor. At 100 % one pixel of the picture is one
// of the screen. Main thread.
#pragma once

#include <QAbstractScrollArea>
#include <QImage>
#include <functional>

namespace desktop {

class PictureView : public QAbstractScrollArea {
 public:
  explicit PictureView(QWidget* parent);

  void Show(const QImage& picture);
  const QImage& Picture() const { return picture_; }
  void Fit();
  bool Fits() const { return fits_; }
  // 1 is 100 %; the middle of what is shown stays.
  void SetZoom(double zoom) { ZoomAt(zoom, QRectF(viewport()->rect()).center()); }
  double Zoom() const;
  // Told when the zoom changes.
  std::function<void()> zoomed;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  // Sides of the whole picture in the widget's units.
  QSizeF ShownSize() const;
  QRectF Place() const;
  void ZoomAt(double zoom, QPointF place);
  void SetRanges();

  QImage picture_;
  bool fits_ = true;
  double zoom_ = 1;
  QPoint draggedTo_;
};

}  // namespace desktop
