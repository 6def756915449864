#include "program/desktop/Icons.h"

#include <QDir>
#include <QFile>
#include <QHash>
#include <QIconEngine>
#include <QPainter>
#include <QSvgRenderer>
#include <memory>

#include "program/desktop/Theme.h"

namespace desktop {

namespace {

constexpr const char* kFolder = ":/icons/";
constexpr const char* kIconSuffix = ".svg";
// Opacity of a disabled icon.
constexpr double kFaint = 0.35;
// Loud on purpose: a name that is misspelled shows at the first look.
constexpr QRgb kMissing = 0xffff00ff;
// Colors in the icon files, replaced by those of the theme.
constexpr const char* kLineColor = "#c8c8c8";
constexpr const char* kAccent = "#c98a3d";

// One for each theme, so that icons that are in use follow it.
struct Drawing {
  QSvgRenderer dark;
  QSvgRenderer light;

  explicit Drawing(const QByteArray& file) : dark(file), light(Colored(file, LightTheme())) {}
  static QByteArray Colored(QByteArray file, const Theme& theme) {
    file.replace(kLineColor, QColor(theme.iconLine).name().toLatin1());
    return file.replace(kAccent, QColor(theme.accent).name().toLatin1());
  }
  QSvgRenderer& Present() { return PresentTheme().isLight ? light : dark; }
};

// Draws the file anew for each size, so that no picture of it is ever scaled.
class DrawnIcon : public QIconEngine {
 public:
  explicit DrawnIcon(std::shared_ptr<Drawing> drawing) : drawing_(std::move(drawing)) {}

  void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
    if (!drawing_->Present().isValid()) {
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
    drawing_->Present().render(painter, square);
  }

  // Asked by the toolkit for menus and cursors; it knows no other way to a transparent one.
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
    const QPixmap whole =
        pixmap(rect.size() * painter.device()->devicePixelRatioF(), QIcon::Normal, QIcon::Off);
    painter.save();
    painter.setOpacity(painter.opacity() * kFaint);
    painter.drawPixmap(rect, whole);
    painter.restore();
  }

  std::shared_ptr<Drawing> drawing_;
};

QIcon Load(const QString& name) {
  QFile file(kFolder + name + kIconSuffix);
  auto drawing =
      std::make_shared<Drawing>(file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray());
  if (!drawing->dark.isValid()) qWarning("There is no icon \"%s\".", qPrintable(name));
  return QIcon(new DrawnIcon(std::move(drawing)));
}

}  // namespace

// Read once for each name and kept for good: the map is never destroyed, because icons are asked
// for until the very end.
QIcon Icon(const QString& name) {
  static auto* const icons = new QHash<QString, QIcon>;
  const auto known = icons->constFind(name);
  return known != icons->constEnd() ? *known : *icons->insert(name, Load(name));
}

QStringList IconNames() {
  QStringList names;
  for (const QString& file :
       QDir(kFolder).entryList({QString("*") + kIconSuffix}, QDir::Files, QDir::Name)) {
    names.append(file.chopped(4));
  }
  return names;
}

}  // namespace desktop
