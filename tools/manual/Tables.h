// The tables of the printed manual: rules under their rows, no lines between columns, and panels of
// one cell.
#pragma once

#include <QColor>
#include <QTextCursor>
#include <QTextTable>
#include <vector>

#include "tools/manual/Manuscript.h"

namespace manual {

// Inserts a table without borders whose columns have these widths, in layout units. The document
// owns it.
QTextTable* InsertPlainTable(QTextCursor& cursor, int rows, const std::vector<double>& widths);

// Widths in which `cells` fill `total`: each column as wide as its longest text where there is
// room. Else the first has up to two fifths, and the others share the rest by the longest text of
// each.
std::vector<double> ColumnWidths(const std::vector<std::vector<Line>>& cells, double total);

// Space and rule of a cell of a table.
void FormatCell(const QTextTable& table, QTextTableCell cell);
// Background of a panel's only cell, and a bar at its left where `bar` is a color.
void FormatPanel(QTextTableCell cell, const QColor& background, const QColor& bar);
// Space inside a cell, in points.
void Pad(QTextTableCell cell, double left, double top, double right, double bottom);

}  // namespace manual
