#include "tools/manual/Look.h"

#include <QFontDatabase>
#include <QStringList>

namespace manual {

namespace {

constexpr const char* kSerif = "DejaVu Serif";
constexpr const char* kSans = "DejaVu Sans";
constexpr const char* kMono = "DejaVu Sans Mono";

// Without hinting, which would set letters for a screen and not for paper.
QFont Font(const char* family, double size, bool bold) {
  QFont font(QString::fromLatin1(family));
  font.setPointSizeF(size);
  font.setBold(bold);
  font.setHintingPreference(QFont::PreferNoHinting);
  return font;
}

QTextCharFormat Text(const QFont& font, const QColor& color) {
  QTextCharFormat format;
  format.setFont(font);
  format.setForeground(color);
  return format;
}

QTextBlockFormat Block(double above, double below, double lineHeight) {
  QTextBlockFormat format;
  format.setTopMargin(Points(above));
  format.setBottomMargin(Points(below));
  format.setLineHeight(lineHeight, QTextBlockFormat::ProportionalHeight);
  return format;
}

}  // namespace

QFont Serif(double size, bool bold) { return Font(kSerif, size, bold); }
QFont Sans(double size, bool bold) { return Font(kSans, size, bold); }
QFont Mono(double size) { return Font(kMono, size, false); }

QStringList MissingFonts() {
  QStringList missing;
  const QStringList families = QFontDatabase::families();
  for (const char* family : {kSerif, kSans, kMono}) {
    if (!families.contains(QString::fromLatin1(family))) missing << QString::fromLatin1(family);
  }
  return missing;
}

QTextCharFormat BodyText() { return Text(Serif(9.6), kInk); }

QTextCharFormat HeadingText(int level) {
  constexpr double kSizes[] = {21, 13, 10.5};
  return Text(Sans(kSizes[qBound(1, level, 3) - 1], true), level == 1 ? kAccent : kInk);
}

QTextCharFormat CaptionText() { return Text(Sans(8), kQuiet); }
QTextCharFormat CellText(bool header) {
  return header ? Text(Sans(8.2, true), kAccent) : Text(Sans(8.4), kInk);
}
QTextCharFormat ContentsText(bool chapter) {
  return Text(Sans(chapter ? 9.6 : 8.8, chapter), chapter ? kAccent : kInk);
}
QTextCharFormat CodeText() { return Text(Mono(8.2), kInk); }

QTextBlockFormat BodyBlock() { return Block(0, 7.5, 122); }

QTextBlockFormat HeadingBlock(int level) {
  if (level == 1) {
    QTextBlockFormat chapter = Block(11, 16, 105);
    chapter.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
    return chapter;
  }
  return level == 2 ? Block(15, 5.5, 110) : Block(9, 4, 110);
}

QTextBlockFormat ListBlock(int level) {
  QTextBlockFormat format = Block(0, 3.6, 122);
  format.setLeftMargin(Points(15) * level);
  format.setTextIndent(-Points(13));
  format.setTabPositions({QTextOption::Tab(Points(13), QTextOption::LeftTab)});
  return format;
}

QTextBlockFormat NoteBlock() { return Block(0, 0, 122); }
QTextBlockFormat CellBlock() { return Block(0, 0, 112); }

QTextBlockFormat PictureBlock() {
  QTextBlockFormat format = Block(6, 3, 100);
  format.setAlignment(Qt::AlignHCenter);
  return format;
}

QTextBlockFormat CaptionBlock() {
  QTextBlockFormat format = Block(0, 12, 112);
  format.setAlignment(Qt::AlignHCenter);
  return format;
}

QTextBlockFormat HairBlock() {
  QTextBlockFormat format;
  format.setLineHeight(Points(1), QTextBlockFormat::FixedHeight);
  return format;
}

}  // namespace manual
