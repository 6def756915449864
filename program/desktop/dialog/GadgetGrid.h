// Where the children of a dialog's group stand: cells by the group's columns and rows, alignment
// and stretch by the fit flags, sizes in pixels from the encoded ones. Pure functions; any thread.
#pragma once

#include <QFontMetrics>
#include <QSize>
#include <Qt>

#include "engine/dialog/Dialogs.h"

namespace desktop {

struct Cell {
  int row;
  int column;
};

// Cell of child `index` (0-based). A group with columns is filled row by row; one with rows only
// has as many columns as its children need; one with neither has one column.
Cell CellOf(const engine::Gadget& group, int index);

// The fit flags: three bits across the height (1 center, 2 top, 4 bottom) and the same three times
// eight across the width (8 center, 16 left, 32 right); all three bits of a direction fill it.
bool FillsWidth(host::LONG flags);
bool FillsHeight(host::LONG flags);
// For a layout: a direction that is filled has no alignment.
Qt::Alignment AlignmentOf(host::LONG flags);

// Size asked for by the plug-in, 0 for a direction it leaves to us.
QSize AskedSize(const engine::Gadget& gadget, const QFontMetrics& font);

}  // namespace desktop
