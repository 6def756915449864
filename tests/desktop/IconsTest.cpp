// The icons: every file can be drawn, every name that the code uses has one, and they look right
// switched off and at any scale.
#include "program/desktop/Icons.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QDirIterator>
#include <QGridLayout>
#include <QLabel>
#include <QPainter>
#include <QRegularExpression>
#include <set>

#include "program/desktop/menus/Menus.h"
#include "tests/desktop/Desk.h"

namespace {

using desktop::Icon;

constexpr int kSizes[] = {16, 20, 32};

QImage Drawn(const QString& name, QIcon::Mode mode) {
  return Icon(name).pixmap(QSize(32, 32), mode).toImage().convertToFormat(QImage::Format_ARGB32);
}

// The brightest that any pixel is, 0..255; 0 for an empty picture.
int Brightest(const QImage& image) {
  int best = 0;
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x)
      best = std::max(best, qAlpha(image.pixel(x, y)) * qGray(image.pixel(x, y)) / 255);
  }
  return best;
}

bool TouchesEdge(const QImage& image) {
  for (int i = 0; i < image.width(); ++i) {
    for (const auto& [x, y] :
         {std::pair{i, 0}, {i, image.height() - 1}, {0, i}, {image.width() - 1, i}}) {
      if (qAlpha(image.pixel(x, y)) > 128) return true;
    }
  }
  return false;
}

std::set<QString> NamesInCode() {
  std::set<QString> names;
  const QRegularExpression call("\\bIcon\\(\"([^\"]*)\"\\)");
  QDirIterator files(TEST_SOURCE_DIR "/program/desktop", {"*.cpp", "*.h"}, QDir::Files,
                     QDirIterator::Subdirectories);
  while (files.hasNext()) {
    QFile file(files.next());
    if (!file.open(QIODevice::ReadOnly)) continue;
    for (auto found = call.globalMatch(QString::fromUtf8(file.readAll())); found.hasNext();)
      names.insert(found.next().captured(1));
  }
  return names;
}

TEST(Icons, EveryFileCanBeDrawnAndIsFaintWhenSwitchedOff) {
  const QDir folder(TEST_SOURCE_DIR "/program/desktop/icons");
  const QStringList files = folder.entryList({"*.svg"}, QDir::Files);
  EXPECT_EQ(files.size(), desktop::IconNames().size());
  EXPECT_GE(files.size(), 40);
  for (const QString& name : desktop::IconNames()) {
    const QImage image = Drawn(name, QIcon::Normal);
    EXPECT_GT(Brightest(image), 100) << name.toStdString() << " shows nothing";
    EXPECT_FALSE(TouchesEdge(image)) << name.toStdString() << " is cut off";
    const int off = Brightest(Drawn(name, QIcon::Disabled));
    EXPECT_LT(off, Brightest(image) / 2) << name.toStdString();
    EXPECT_GT(off, 20) << name.toStdString();
  }
}

TEST(Icons, EveryNameInTheCodeHasAFile) {
  const QStringList there = desktop::IconNames();
  for (const QString& name : NamesInCode()) EXPECT_TRUE(there.contains(name)) << name.toStdString();
}

TEST(Icons, EveryMenuEntryThatHasOneIsThere) {
  desk::Desk desk;
  const QStringList there = desktop::IconNames();
  for (const desktop::MenuIcon& row : desktop::MenuIcons()) {
    EXPECT_TRUE(there.contains(row.icon)) << row.icon;
    EXPECT_FALSE(desk.Entry(row.menu, row.entry).icon().isNull()) << row.entry;
  }
}

TEST(Icons, AMissingOneCannotBeOverlooked) {
  const QImage image = Icon("no-such-icon").pixmap(16, 16).toImage();
  EXPECT_EQ(image.pixel(8, 8), 0xffff00ffU);
}

TEST(Icons, AreAsSharpAsTheScreen) {
  const QPixmap fine = Icon("search").pixmap(QSize(16, 16), 2.0);
  EXPECT_EQ(fine.size(), QSize(32, 32));
  EXPECT_EQ(
      fine.toImage(),
      Icon("search").pixmap(QSize(32, 32), 1.0).toImage().convertToFormat(fine.toImage().format()));
}

TEST(IconsPicture, AllOfThem) {
  QWidget page;
  auto* grid = new QGridLayout(&page);
  int place = 0;
  for (const QString& name : desktop::IconNames()) {
    auto* cell = new QWidget(&page);
    auto* row = new QHBoxLayout(cell);
    for (const int size : kSizes) {
      for (const QIcon::Mode mode : {QIcon::Normal, QIcon::Disabled}) {
        auto* picture = new QLabel(cell);
        picture->setPixmap(Icon(name).pixmap(QSize(size, size), page.devicePixelRatio(), mode));
        row->addWidget(picture);
      }
    }
    row->addWidget(new QLabel(name, cell), 1);
    grid->addWidget(cell, place / 4, place % 4);
    ++place;
  }
  page.show();
  EXPECT_TRUE(pictures::Write(page, "icons"));
}

}  // namespace
