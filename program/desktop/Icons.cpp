#include "program/desktop/Icons.h"

#include <QDir>
#include <QHash>
#include <QIconEngine>
#include <QPainter>
#include <QSvgRenderer>
#include <memory>

namespace desktop {

namespace {

constexpr const char* kFolder = ":/icons/";
constexpr const char* kSuffix = ".svg";
constexpr double kFaint = 0.35;
constexpr QRgb kMissing = 0xffff00ff;

// Draws the file anew for each size, so that no picture of it is ever scaled.
class DrawnIcon : public QIconEngine {
 public:
  explicit DrawnIcon(std::shared_ptr<QSvgRenderer> drawing) : drawing_(std::move(drawing)) {}

  void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
    if (!drawing_->isValid()) {
      painter->fillRect(rect, QColor(kMissing));
      return;
    }
    if (mode == QIcon::Disabled) {
      PaintFaint(*painter, rect);
      return;
    }
    const int side = std::min(rect.width(), rect.height());
    QRectF square(0, 0, side, side);
    square.moveCenter(QRectF(rect).center());
    drawing_->render(painter, square);
  }

  QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
    QPixmap picture(size);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    paint(&painter, QRect({0, 0}, size), mode, state);
    return picture;
  }

  QSize actualSize(const QSize& size, QIcon::Mode, QIcon::State) override { return size; }
  QIconEngine* clone() const override { return new DrawnIcon(*this); }

 private:
  // As one picture: strokes that cross would add up.
  void PaintFaint(QPainter& painter, const QRect& rect) {
    const QPixmap whole = pixmap(rect.size() * painter.device()->devicePixelRatioF(), QIcon::Normal, QIcon::Off);
    painter.save();
    painter.setOpacity(painter.opacity() * kFaint);
    painter.drawPixmap(rect, whole);
    painter.restore();
  }

  std::shared_ptr<QSvgRenderer> drawing_;
};

QIcon Load(const QString& name) {
  auto drawing = std::make_shared<QSvgRenderer>(kFolder + name + kSuffix);
  if (!drawing->isValid()) qWarning("There is no icon \"%s\".", qPrintable(name));
  return QIcon(new DrawnIcon(std::move(drawing)));
}

}  // namespace

QIcon Icon(const QString& name) {
  static auto* const icons = new QHash<QString, QIcon>;
  const auto known = icons->constFind(name);
  return known != icons->constEnd() ? *known : *icons->insert(name, Load(name));
}

QStringList IconNames() {
  QStringList names;
  for (const QString& file : QDir(kFolder).entryList({QString("*") + kSuffix}, QDir::Files, QDir::Name)) {
    names.append(file.chopped(4));
  }
  return names;
}

}  // namespace desktop
