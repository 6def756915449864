#include "program/desktop/render/PictureWindow.h"

#include <QKeyEvent>
#include <QMessageBox>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>
#include <map>

#include "program/desktop/DocumentCommands.h"
#include "program/desktop/ScreenFit.h"
#include "program/desktop/Text.h"
#include "program/desktop/render/PictureSaving.h"
#include "program/pictures/SaidNotes.h"

namespace desktop {

namespace {

// Pixels of the screen for each of the picture.
constexpr double kSmallestZoom = 0.02;
constexpr double kLargestZoom = 32;
constexpr double kZoomPerNotch = 1.25;
// Dark in both looks: pictures are judged by themselves.
constexpr QRgb kGround = 0xff1c1c1c;

constexpr int kPictureMargin = 8;
constexpr int kMostNotes = 6;

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

// In units of the widget, which are pixels on a plain screen only.
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

// Fitted, nothing scrolls; otherwise by what does not fit.
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

// The pixel under the pointer stays there.
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
  // From twice on one wants to see the pixels.
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

// A window of its own and no panel: it outlives changes of the document, which it only names.
PictureWindow::PictureWindow(QWidget* window, const engine::Services& services, const QString& kind,
                             const host::BaseDocument& doc)
    : QWidget(window, Qt::Window),
      services_(services),
      view_(new PictureView(this)),
      zoom_(new QLabel(this)),
      notes_(new QLabel(this)),
      doc_(IdentityOf(&doc)),
      progress_(new QProgressBar(this)),
      text_(new QLabel(this)) {
  setAttribute(Qt::WA_DeleteOnClose);
  setWindowTitle(kind + " - " + DocumentTitle(doc));
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(0);
  column->addWidget(MakeButtons());
  column->addWidget(view_, 1);
  notes_->setContentsMargins(kPictureMargin, kPictureMargin / 2, kPictureMargin,
                             kPictureMargin / 2);
  notes_->setWordWrap(true);
  notes_->setTextFormat(Qt::PlainText);
  notes_->hide();
  column->addWidget(notes_);
  column->addWidget(MakeBottom());
  save_ = AddButton("Save As...", "Write the picture as a PNG or TIFF file", [this] { SaveAs(); });
  save_->setEnabled(false);
  view_->zoomed = [this] { ShowZoom(); };
  view_->setFocus();
  resize(FittingSize(*this, {960, 720}));
  ShowZoom();
}

QWidget* PictureWindow::MakeButtons() {
  auto* row = new QWidget(this);
  buttons_ = new QHBoxLayout(row);
  buttons_->setContentsMargins(kPictureMargin, kPictureMargin, kPictureMargin, kPictureMargin);
  fit_ = new QPushButton("Fit", row);
  fit_->setToolTip("Show the whole picture (0)");
  connect(fit_, &QPushButton::clicked, this, [this] { view_->Fit(); });
  auto* whole = new QPushButton("100 %", row);
  whole->setToolTip(
      "One pixel of the picture is one of the screen (1). The wheel zooms, dragging moves the "
      "picture.");
  connect(whole, &QPushButton::clicked, this, [this] { view_->SetZoom(1); });
  buttons_->addWidget(fit_);
  buttons_->addWidget(whole);
  buttons_->addWidget(zoom_);
  buttons_->addStretch(1);
  return row;
}

QWidget* PictureWindow::MakeBottom() {
  auto* row = new QWidget(this);
  auto* layout = new QHBoxLayout(row);
  layout->setContentsMargins(kPictureMargin, kPictureMargin / 2, kPictureMargin,
                             kPictureMargin / 2);
  progress_->setRange(0, 1000);
  progress_->setTextVisible(false);
  progress_->setFixedWidth(180);
  progress_->setAccessibleName("Progress");
  text_->setTextFormat(Qt::PlainText);
  layout->addWidget(progress_);
  layout->addWidget(text_, 1);
  return row;
}

QPushButton* PictureWindow::AddButton(const QString& text, const QString& tip,
                                      std::function<void()> work) {
  auto* button = new QPushButton(text, this);
  button->setToolTip(tip);
  connect(button, &QPushButton::clicked, this, [work = std::move(work)] { work(); });
  // Saving stays the last one.
  buttons_->insertWidget(buttons_->count() - (save_ ? 1 : 0), button);
  return button;
}

void PictureWindow::Say(const QString& text) { text_->setText(text); }

void PictureWindow::Keep(std::shared_ptr<const engine::Image> picture) {
  picture_ = std::move(picture);
  save_->setEnabled(picture_ != nullptr);
}

void PictureWindow::SaveAs() {
  if (!picture_) return;
  if (const auto file = AskForPicture(this, "Save the picture as", file_)) Write(*file);
}

// The picture stays, so after a failure it can be saved elsewhere.
void PictureWindow::Write(const std::string& file, std::function<void(bool)> done) {
  save_->setEnabled(false);
  Say("Writing " + ToQt(file));
  SavePicture(this, services_, picture_, file,
              [this, file, done = std::move(done)](const engine::Status& written) {
                save_->setEnabled(true);
                Say(written ? "Written: " + ToQt(file) : "Not written: " + ToQt(written.Message()));
                if (done) done(written.Ok());
                if (!written) {
                  QMessageBox::warning(
                      this, windowTitle(),
                      ToQt(written.Message()) + "\n\nSave As writes it to another place.");
                }
              });
}

// Counts of faulty geometry are said once for a document and session, other notes once for a
// window.
bool PictureWindow::IsToBeSaid(const std::string& note) {
  static std::map<host::ULLONG, pictures::SaidNotes> saidOf;  // by document
  return heard_.insert(note).second && (!pictures::IsCount(note) || saidOf[doc_].IsNew(note));
}

void PictureWindow::SayNotes(const std::vector<std::string>& notes) {
  for (const std::string& note : notes) {
    if (IsToBeSaid(note)) told_.append(ToQt(note));
  }
  QStringList lines = told_.mid(0, kMostNotes);
  if (told_.size() > kMostNotes)
    lines.append(QString("And %1 more.").arg(told_.size() - kMostNotes));
  notes_->setText(lines.join('\n'));
  notes_->setVisible(!lines.isEmpty());
}

void PictureWindow::ShowZoom() {
  zoom_->setText(view_->Picture().isNull() ? QString()
                                           : QString("  %1 %").arg(view_->Zoom() * 100, 0, 'f', 0));
}

void PictureWindow::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Escape) {
    close();
  } else {
    QWidget::keyPressEvent(event);
  }
}

}  // namespace desktop
