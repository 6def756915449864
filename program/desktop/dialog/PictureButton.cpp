#include "program/desktop/dialog/PictureButton.h"

#include <QPainter>

#include "engine/render/Image.h"
#include "program/desktop/Text.h"
#include "program/desktop/dialog/GadgetGrid.h"

namespace desktop {

namespace {

constexpr QSize kSmallest(64, 48);
// Of the frame where there is nothing to show.
constexpr QSize kUsualShape(4, 3);

QImage ToPicture(const engine::Image& image) {
  const engine::Image bytes = engine::ToBytes(image);
  const QImage view(bytes.bytes.data(), static_cast<int>(bytes.width),
                    static_cast<int>(bytes.height), static_cast<qsizetype>(bytes.width) * 4,
                    QImage::Format_RGBA8888);
  return view.copy();
}

}  // namespace

PictureButton::PictureButton(const engine::Gadget& gadget, QWidget* parent)
    : QAbstractButton(parent),
      asked_(AskedSize(gadget, fontMetrics())),
      border_(gadget.settings.GetBool(host::BITMAPBUTTON_BORDER)) {
  setAccessibleName(ToQt(gadget.text));
  setMinimumSize(kSmallest);
  setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
}

QSize PictureButton::sizeHint() const { return Fitted(asked_).expandedTo(kSmallest); }

QSize PictureButton::Fitted(QSize room) const {
  return (picture_.isNull() ? kUsualShape : picture_.size()).scaled(room, Qt::KeepAspectRatio);
}

void PictureButton::Show(const engine::Gadget& gadget) {
  setEnabled(gadget.enabled);
  Load(gadget.image.GetString().ToUtf8());
}

void PictureButton::Load(const std::string& path) {
  engine::Outside& files = engine::Outside::Current();
  const engine::FileStamp stamp = path.empty() ? engine::FileStamp{} : files.Stamp(path);
  if (path == path_ && stamp == stamp_) return;
  path_ = path;
  stamp_ = stamp;
  picture_ = QImage();
  update();
  updateGeometry();
  if (path.empty()) return;
  const auto bytes = files.ReadFile(path, engine::kLargestImageBytes);
  if (!bytes) return;
  const auto image = engine::DecodeImage(bytes.Value());
  if (image) picture_ = ToPicture(image.Value());
}

void PictureButton::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  QRect frame({0, 0}, Fitted(size()));
  frame.moveCenter(rect().center());
  const QRect inside = border_ ? frame.adjusted(1, 1, -1, -1) : frame;
  if (border_)
    painter.fillRect(frame, palette().color(hasFocus() ? QPalette::Link : QPalette::Mid));
  painter.fillRect(inside, palette().color(QPalette::Base));
  painter.setRenderHint(QPainter::SmoothPixmapTransform);
  if (!picture_.isNull()) painter.drawImage(inside, picture_);
  if (!hasFocus() || border_) return;
  painter.setPen(palette().color(QPalette::Link));
  painter.drawRect(frame.adjusted(0, 0, -1, -1));
}

}  // namespace desktop
