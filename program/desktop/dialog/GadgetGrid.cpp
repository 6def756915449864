// Alignment bits of a gadget, as the host numbers them. Height: 1 center, 2 top, 4 bottom; width: 8
// center, 16 left, 32 right. All three bits of a direction mean "fill it".
#include "program/desktop/dialog/GadgetGrid.h"

#include <algorithm>

namespace desktop {

namespace {

constexpr host::LONG kAcrossHeight = 7;
constexpr host::LONG kAcrossWidth = 56;
// Pixels. Larger wishes would overflow in the toolkit's layouts.
constexpr int kLargestSide = 4096;

// Sizes with bits above the lowest sixteen count characters.
int PixelsOf(host::LONG size, int characterSide) {
  const auto units = static_cast<std::int64_t>(size);
  const std::int64_t pixels = units > 0xFFFF ? (units >> 16) * characterSide : units;
  return static_cast<int>(std::clamp<std::int64_t>(pixels, 0, kLargestSide));
}

}  // namespace

// Row by row. With rows and no columns given, as many columns as the rows need; with neither one
// column.
Cell CellOf(const engine::Gadget& group, int index) {
  int columns = std::max(group.columns, 0);
  const int count = static_cast<int>(group.children.size());
  if (columns == 0 && group.rows > 0)
    columns = count / group.rows + (count % group.rows > 0 ? 1 : 0);
  columns = std::max(columns, 1);
  return {index / columns, index % columns};
}

bool FillsWidth(host::LONG flags) { return (flags & kAcrossWidth) == kAcrossWidth; }
bool FillsHeight(host::LONG flags) { return (flags & kAcrossHeight) == kAcrossHeight; }

Qt::Alignment AlignmentOf(host::LONG flags) {
  Qt::Alignment alignment;
  if (!FillsWidth(flags))
    alignment |= flags & 8 ? Qt::AlignHCenter : flags & 32 ? Qt::AlignRight : Qt::AlignLeft;
  if (!FillsHeight(flags))
    alignment |= flags & 2 ? Qt::AlignTop : flags & 4 ? Qt::AlignBottom : Qt::AlignVCenter;
  return alignment;
}

QSize AskedSize(const engine::Gadget& gadget, const QFontMetrics& font) {
  return {PixelsOf(gadget.width, font.averageCharWidth()), PixelsOf(gadget.height, font.height())};
}

}  // namespace desktop
