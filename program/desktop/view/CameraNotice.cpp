#include "program/desktop/view/CameraNotice.h"

#include <QGridLayout>
#include <QPainter>

#include "program/desktop/Colors.h"

namespace desktop {

namespace {

// Pixels; opacity 0 to 255.
constexpr int kNoticeMargin = 10;
constexpr int kShortestName = 80;
constexpr int kNoticeOpacity = 170;
constexpr double kNoticeRadius = 4;

// On a picture, whose colors are none of the program's.
const char* const kLook =
    "QLabel { color: #dcdcdc; }"
    "QToolButton { color: #dcdcdc; background: rgba(90, 90, 90, 150); border: 1px solid #6a6a6a; "
    "border-radius: 4px;"
    " padding: 2px 8px; }"
    "QToolButton:hover { background: rgba(110, 110, 110, 200); }"
    "QToolButton:pressed { background: rgba(50, 50, 50, 200); }"
    "QToolButton:checked { background: #c98a3d; border-color: #c98a3d; color: #1c1c1c; }"
    "QToolButton:disabled { color: #858585; }";

}  // namespace

CameraNotice::CameraNotice(QWidget* parent)
    : QWidget(parent),
      seen_(new QLabel(this)),
      recorded_(new QLabel(this)),
      fly_(AddButton()),
      makeSceneCamera_(AddButton()),
      newCamera_(AddButton()) {
  setStyleSheet(kLook);
  auto* lines = new QVBoxLayout(this);
  lines->setContentsMargins(kNoticeMargin, kNoticeMargin / 2, kNoticeMargin, kNoticeMargin / 2);
  lines->setSpacing(kNoticeMargin / 2);
  const auto addLine = [&](std::initializer_list<QWidget*> widgets) {
    auto* line = new QHBoxLayout;
    line->setSpacing(kNoticeMargin);
    for (QWidget* widget : widgets) line->addWidget(widget);
    line->addStretch();
    lines->addLayout(line);
  };
  addLine({seen_, fly_});
  addLine({recorded_, makeSceneCamera_, newCamera_});
  for (QLabel* label : {seen_, recorded_}) label->setTextFormat(Qt::PlainText);
  hide();
}

// The keys go to the picture; the menus have the same.
QToolButton* CameraNotice::AddButton() {
  auto* button = new QToolButton(this);
  button->setToolButtonStyle(Qt::ToolButtonTextOnly);
  button->setFocusPolicy(Qt::NoFocus);
  button->setCursor(Qt::ArrowCursor);
  connect(button, &QToolButton::clicked, this,
          [this] { parentWidget()->setFocus(Qt::MouseFocusReason); });
  return button;
}

void CameraNotice::SetActions(QAction& fly, QAction& makeSceneCamera, QAction& newCamera) {
  fly_->setDefaultAction(&fly);
  makeSceneCamera_->setDefaultAction(&makeSceneCamera);
  newCamera_->setDefaultAction(&newCamera);
}

void CameraNotice::Show(const State& state) {
  if (state_ == state) return;
  state_ = state;
  Arrange();
}

void CameraNotice::FitInto(QSize size) {
  room_ = size;
  Arrange();
}

// The text takes what the button beside it leaves. A child widget without a layout above it places
// itself.
void CameraNotice::Arrange() {
  setVisible(!state_.seen.isEmpty());
  if (state_.seen.isEmpty()) return;
  const bool differs = !state_.recorded.isEmpty();
  fly_->setVisible(state_.throughCamera);
  recorded_->setVisible(differs);
  makeSceneCamera_->setVisible(differs && state_.throughCamera);
  newCamera_->setVisible(differs && !state_.throughCamera);
  const auto fit = [this](QLabel& label, const QString& text, const QWidget& beside) {
    const int taken = 5 * kNoticeMargin + (beside.isHidden() ? 0 : beside.sizeHint().width());
    label.setText(fontMetrics().elidedText(text, Qt::ElideRight,
                                           std::max(kShortestName, room_.width() - taken)));
  };
  fit(*seen_, state_.seen, *fly_);
  fit(*recorded_, "Recorded: " + state_.recorded,
      state_.throughCamera ? *makeSceneCamera_ : *newCamera_);
  setToolTip(differs ? "Recordings hold the scene camera, not what is seen here." : QString());
  layout()->activate();
  setGeometry(QRect({kNoticeMargin, kNoticeMargin}, sizeHint()));
}

void CameraNotice::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.setBrush(QColor(24, 24, 24, kNoticeOpacity));
  painter.drawRoundedRect(rect(), kNoticeRadius, kNoticeRadius);
}

}  // namespace desktop
