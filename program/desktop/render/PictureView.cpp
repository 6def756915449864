#include "program/desktop/render/PictureView.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <algorithm>
#include <cmath>

namespace desktop {

namespace {

constexpr double kSmallestZoom = 0.02;
constexpr double kLargestZoom = 32;
constexpr double kZoomPerNotch = 1.25;
constexpr QRgb kGround = 0xff1c1c1c;

}  // namespace

PictureView::PictureView(QWidget* parent) : QAbstractScrollArea(parent) {
  setFrameShape(QFrame::NoFrame);
  setFocusPolicy(Qt::StrongFocus);
  setMinimumSize(200, 150);
  viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
}

void PictureView::Show(const QImage& picture) {
  const bool resized = picture.size() != picture_.size();
  picture_ = picture;
  if (resized) SetRanges();
  if (resized && zoomed) zoomed();
  viewport()->update();
}

void PictureView::Fit() {
  fits_ = true;
  SetRanges();
  viewport()->update();
  if (zoomed) zoomed();
}

// Small pictures are not blown up.
double PictureView::Zoom() const {
  if (!fits_ || picture_.isNull()) return zoom_;
  const QSizeF room = QSizeF(viewport()->size()) * devicePixelRatioF();
  return std::clamp(std::min(room.width() / picture_.width(), room.height() / picture_.height()),
                    kSmallestZoom, 1.0);
}

QSizeF PictureView::ShownSize() const {
  return QSizeF(picture_.size()) * Zoom() / devicePixelRatioF();
}

QRectF PictureView::Place() const {
  const QSizeF size = ShownSize();
  const QSizeF room = viewport()->size();
  const double left = size.width() <= room.width() ? (room.width() - size.width()) / 2
                                                   : -horizontalScrollBar()->value();
  const double top = size.height() <= room.height() ? (room.height() - size.height()) / 2
                                                    : -verticalScrollBar()->value();
  return {QPointF(left, top), size};
}

void PictureView::SetRanges() {
  const QSizeF size = fits_ ? QSizeF(0, 0) : ShownSize();
  const QSize room = viewport()->size();
  horizontalScrollBar()->setRange(
      0, std::max(0, static_cast<int>(std::ceil(size.width())) - room.width()));
  verticalScrollBar()->setRange(
      0, std::max(0, static_cast<int>(std::ceil(size.height())) - room.height()));
  horizontalScrollBar()->setPageStep(room.width());
  verticalScrollBar()->setPageStep(room.height());
}

void PictureView::ZoomAt(double zoom, QPointF place) {
  const QRectF before = Place();
  const QPointF share((place.x() - before.left()) / std::max(1.0, before.width()),
                      (place.y() - before.top()) / std::max(1.0, before.height()));
  zoom_ = std::clamp(zoom, kSmallestZoom, kLargestZoom);
  fits_ = false;
  SetRanges();
  const QSizeF size = ShownSize();
  horizontalScrollBar()->setValue(static_cast<int>(share.x() * size.width() - place.x()));
  verticalScrollBar()->setValue(static_cast<int>(share.y() * size.height() - place.y()));
  viewport()->update();
  if (zoomed) zoomed();
}

void PictureView::paintEvent(QPaintEvent*) {
  QPainter painter(viewport());
  painter.fillRect(viewport()->rect(), QColor(kGround));
  if (picture_.isNull()) return;
  painter.setRenderHint(QPainter::SmoothPixmapTransform, Zoom() < 2);
  painter.drawImage(Place(), picture_);
}

void PictureView::resizeEvent(QResizeEvent*) {
  SetRanges();
  if (fits_ && zoomed) zoomed();
}

void PictureView::wheelEvent(QWheelEvent* event) {
  ZoomAt(Zoom() * std::pow(kZoomPerNotch,
                           event->angleDelta().y() / double{QWheelEvent::DefaultDeltasPerStep}),
         event->position());
}

void PictureView::mousePressEvent(QMouseEvent* event) { draggedTo_ = event->pos(); }

void PictureView::mouseMoveEvent(QMouseEvent* event) {
  const QPoint way = event->pos() - draggedTo_;
  draggedTo_ = event->pos();
  horizontalScrollBar()->setValue(horizontalScrollBar()->value() - way.x());
  verticalScrollBar()->setValue(verticalScrollBar()->value() - way.y());
}

void PictureView::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
    case Qt::Key_Plus:
    case Qt::Key_Equal:
      return SetZoom(Zoom() * kZoomPerNotch);
    case Qt::Key_Minus:
      return SetZoom(Zoom() / kZoomPerNotch);
    case Qt::Key_1:
      return SetZoom(1);
    case Qt::Key_0:
    case Qt::Key_F:
      return Fit();
    default:
      return QAbstractScrollArea::keyPressEvent(event);
  }
}

}  // namespace desktop
