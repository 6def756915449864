#include "program/desktop/render/WipeWindow.h"

#include <QKeyEvent>
#include <QPainter>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "program/desktop/ScreenFit.h"
#include "program/desktop/Text.h"
#include "program/desktop/Theme.h"
#include "program/desktop/render/RenderJob.h"

namespace desktop {

namespace {

constexpr int kWipeMargin = 8;
// Shares of the picture's width.
constexpr double kStep = 0.02;
constexpr double kLargeStep = 0.1;
constexpr int kRest = 300;  // milliseconds until a new size is rendered
constexpr QSize kFirstWipeSize(960, 620);
constexpr QSize kLeastSize(240, 180);
constexpr float kPillOpacity = 0.85F;
constexpr const char* kHint =
    "Move the pointer, or press Left and Right. Tab or X swaps A and B, Escape closes.";

}  // namespace

WipeView::WipeView(WipeSide a, WipeSide b, QWidget* parent)
    : QWidget(parent), sides_{std::move(a), std::move(b)} {
  setMouseTracking(true);
  setFocusPolicy(Qt::StrongFocus);
  setMinimumSize(kLeastSize);
  setCursor(Qt::SplitHCursor);
  setAccessibleName("A and B");
}

void WipeView::Show(const std::string& name, const QImage& image) {
  for (WipeSide& side : sides_) {
    if (side.name == name) side.image = image;
  }
  update();
}

void WipeView::Swap() {
  std::swap(sides_[0], sides_[1]);
  update();
}

void WipeView::SetDivider(double share) {
  divider_ = std::clamp(share, 0.0, 1.0);
  update();
}

// Both pictures lie over one another in the shape of A, so that the same share of each is compared.
QRect WipeView::Place() const {
  QSize size = sides_[0].image.isNull() ? sides_[1].image.size() : sides_[0].image.size();
  if (size.isEmpty()) size = {3, 2};
  QRect place(QPoint(), size.scaled(this->size(), Qt::KeepAspectRatio));
  place.moveCenter(rect().center());
  return place;
}

void WipeView::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.fillRect(rect(), QColor(PresentTheme().gap));
  painter.setRenderHint(QPainter::SmoothPixmapTransform);
  const QRect place = Place();
  const int line = place.left() + static_cast<int>(divider_ * place.width());
  for (const std::size_t side : {0U, 1U}) {
    painter.setClipRect(side == 0 ? QRect(QPoint(0, 0), QPoint(line - 1, height()))
                                  : QRect(QPoint(line, 0), QPoint(width(), height())));
    const QImage& image = sides_[side].image;
    if (image.isNull()) {
      painter.fillRect(place, QColor(PresentTheme().button));
      continue;
    }
    QRect own(QPoint(), image.size().scaled(place.size(), Qt::KeepAspectRatio));
    own.moveCenter(place.center());
    painter.drawImage(own, image);
  }
  painter.setClipping(false);
  painter.fillRect(line - 1, place.top(), 2, place.height(), QColor(PresentTheme().accent));
  for (const std::size_t side : {0U, 1U}) PaintName(painter, place, side);
}

void WipeView::PaintName(QPainter& painter, const QRect& place, std::size_t side) const {
  const QString name = (side == 0 ? "A  " : "B  ") + ToQt(sides_[side].name).simplified();
  const QString text =
      fontMetrics().elidedText(name, Qt::ElideRight, place.width() / 2 - 4 * kWipeMargin);
  QRect pill(0, place.top() + kWipeMargin, fontMetrics().horizontalAdvance(text) + 2 * kWipeMargin,
             fontMetrics().height() + kWipeMargin);
  side == 0 ? pill.moveLeft(place.left() + kWipeMargin)
            : pill.moveRight(place.right() - kWipeMargin);
  QColor ground(PresentTheme().window);
  ground.setAlphaF(kPillOpacity);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.setBrush(ground);
  painter.drawRoundedRect(pill, 4, 4);
  painter.setPen(QColor(PresentTheme().text));
  painter.drawText(pill, Qt::AlignCenter, text);
}

void WipeView::mouseMoveEvent(QMouseEvent* event) {
  const QRect place = Place();
  SetDivider((event->position().x() - place.left()) / std::max(1, place.width()));
}

void WipeView::keyPressEvent(QKeyEvent* event) {
  const double step = event->modifiers() & Qt::ShiftModifier ? kLargeStep : kStep;
  switch (event->key()) {
    case Qt::Key_Left:
      return SetDivider(divider_ - step);
    case Qt::Key_Right:
      return SetDivider(divider_ + step);
    case Qt::Key_Home:
      return SetDivider(0);
    case Qt::Key_End:
      return SetDivider(1);
    case Qt::Key_X:
      return Swap();
    default:
      return QWidget::keyPressEvent(event);
  }
}

// Tab swaps instead of leaving: there is nowhere to go in this window.
bool WipeView::focusNextPrevChild(bool) {
  Swap();
  return true;
}

WipeWindow::WipeWindow(QWidget* window, const host::BaseDocument& doc, WipeSide a, WipeSide b)
    : QWidget(window, Qt::Window),
      doc_(IdentityOf(&doc)),
      view_(new WipeView(std::move(a), std::move(b), this)),
      text_(new QLabel(this)) {
  setAttribute(Qt::WA_DeleteOnClose);
  setWindowTitle("A/B: " + ToQt(view_->Side(0).name).simplified() + " and " +
                 ToQt(view_->Side(1).name).simplified());
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addWidget(view_, 1);
  layout->addWidget(text_);
  text_->setContentsMargins(kWipeMargin, kWipeMargin / 2, kWipeMargin, kWipeMargin / 2);
  text_->setText(kHint);
  text_->setWordWrap(true);
  setFocusProxy(view_);
  view_->setFocus();
  rest_.setSingleShot(true);
  rest_.setInterval(kRest);
  connect(&rest_, &QTimer::timeout, this, [this] { Render(); });
  resize(FittingSize(*this, kFirstWipeSize));
}

// The pictures that are there are shown until the larger ones come. A new size ends the child
// before.
void WipeWindow::Render() {
  const host::BaseDocument* doc = FindOpenDocument(doc_);
  if (!doc) return;
  StateRenderer::News news;
  news.rendered = [this](const engine::Image& picture) { Take(picture); };
  news.failed = [this](const std::string& problem) {
    text_->setText(ToQt("The pictures were not rendered at this size: " + problem));
  };
  renderer_ = std::make_unique<StateRenderer>(*doc, std::move(news));
  arrived_ = 0;
  const QSize size = view_->size() * devicePixelRatioF();
  for (const std::size_t side : {0U, 1U}) {
    wanted_[side] = view_->Side(side).name;
    renderer_->Render(wanted_[side], {static_cast<std::uint32_t>(size.width()),
                                      static_cast<std::uint32_t>(size.height())});
  }
  text_->setText(QString("Rendering both at this size\u2026 ") + kHint);
}

// By name: the sides may have been swapped meanwhile.
void WipeWindow::Take(const engine::Image& picture) {
  view_->Show(wanted_[arrived_], ToQImage(picture));
  ++rendered_;
  if (++arrived_ < wanted_.size()) return;
  renderer_->Stop();
  text_->setText(kHint);
}

void WipeWindow::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Escape) {
    close();
    return;
  }
  QWidget::keyPressEvent(event);
}

void WipeWindow::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  rest_.start();
}

}  // namespace desktop
