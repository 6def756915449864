// The look of the printed manual: fonts, colors and measures, each written once. Lengths are units
// of the layout, 96 to the inch; `Points` makes them from printer's points.
#pragma once

#include <QColor>
#include <QFont>
#include <QMarginsF>
#include <QSizeF>
#include <QTextBlockFormat>
#include <QTextCharFormat>

namespace manual {

inline constexpr int kUnitsPerInch = 96;
constexpr double Points(double points) { return points * kUnitsPerInch / 72; }

inline const QColor kInk(0x1c, 0x1f, 0x24);
inline const QColor kAccent(0x1f, 0x4e, 0x79);
inline const QColor kQuiet(0x6b, 0x72, 0x7c);
inline const QColor kRule(0xc9, 0xce, 0xd4);
inline const QColor kPanel(0xf3, 0xf5, 0xf7);
inline const QColor kNote(0xee, 0xf4, 0xfa);

// Left, top, right, bottom
inline const QMarginsF kPageMargins(Points(74), Points(78), Points(74), Points(72));
inline constexpr double kHeaderHeight = Points(48);
inline constexpr double kFooterHeight = Points(44);
inline constexpr double kTallestPicture = 0.46;  // of the page's height
// At this scale a picture has 128 pixels to the inch; smaller ones have more
inline constexpr double kLargestPictureScale = 0.75;

// Fonts, sizes in points. They are of one family, which the system must have; `MissingFonts` names
// those it lacks.
QFont Serif(double size, bool bold = false);
QFont Sans(double size, bool bold = false);
QFont Mono(double size);
QStringList MissingFonts();

QTextCharFormat BodyText();
QTextCharFormat HeadingText(int level);
QTextCharFormat CaptionText();
QTextCharFormat CellText(bool header);
QTextCharFormat CodeText();
QTextCharFormat ContentsText(bool chapter);

QTextBlockFormat BodyBlock();
QTextBlockFormat HeadingBlock(int level);  // a chapter begins a page
QTextBlockFormat ListBlock(int level);     // its text hangs behind a mark and a tab
QTextBlockFormat NoteBlock();
QTextBlockFormat CellBlock();
QTextBlockFormat PictureBlock();
QTextBlockFormat CaptionBlock();
QTextBlockFormat HairBlock();  // an empty line that takes next to no room

}  // namespace manual
