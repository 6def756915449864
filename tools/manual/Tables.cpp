#include "tools/manual/Tables.h"

#include <QFontMetricsF>
#include <algorithm>

#include "tools/manual/Look.h"

namespace manual {

QTextTable* InsertPlainTable(QTextCursor& cursor, int rows, const std::vector<double>& widths) {
  QTextTableFormat format;
  format.setBorder(0);
  format.setCellPadding(0);
  format.setCellSpacing(0);
  format.setTopMargin(Points(3));
  format.setBottomMargin(Points(10));
  format.setHeaderRowCount(rows > 1 ? 1 : 0);
  QList<QTextLength> lengths;
  double total = 0;
  for (const double width : widths) {
    lengths << QTextLength(QTextLength::FixedLength, width);
    total += width;
  }
  format.setColumnWidthConstraints(lengths);
  format.setWidth(QTextLength(QTextLength::FixedLength, total));
  return cursor.insertTable(rows, static_cast<int>(widths.size()), format);
}

std::vector<double> ColumnWidths(const std::vector<std::vector<Line>>& cells, double total) {
  const QFontMetricsF metrics(CellText(true).font());
  std::vector<double> wanted(cells.front().size(), 0.0);
  for (const auto& row : cells) {
    for (std::size_t column = 0; column < row.size(); ++column) {
      const double width = metrics.horizontalAdvance(PlainText(row[column])) + Points(14);
      wanted[column] = std::min(std::max(wanted[column], width), total);
    }
  }
  if (wanted.size() == 1) return {total};
  const double first = std::min(wanted[0], total * 0.4);
  double others = 0;
  for (std::size_t column = 1; column < wanted.size(); ++column) others += wanted[column];
  std::vector<double> widths{first};
  for (std::size_t column = 1; column < wanted.size(); ++column) widths.push_back((total - first) * wanted[column] / others);
  return widths;
}

void Pad(QTextTableCell cell, double left, double top, double right, double bottom) {
  QTextTableCellFormat format = cell.format().toTableCellFormat();
  format.setLeftPadding(Points(left));
  format.setTopPadding(Points(top));
  format.setRightPadding(Points(right));
  format.setBottomPadding(Points(bottom));
  cell.setFormat(format);
}

void FormatCell(QTextTableCell cell, bool head, bool lastColumn) {
  QTextTableCellFormat format = cell.format().toTableCellFormat();
  format.setBottomBorder(Points(head ? 0.9 : 0.4));
  format.setBottomBorderStyle(QTextFrameFormat::BorderStyle_Solid);
  format.setBottomBorderBrush(head ? kAccent : kRule);
  cell.setFormat(format);
  Pad(cell, 0, 3.4, lastColumn ? 0 : 10, 4);
}

void FormatPanel(QTextTableCell cell, const QColor& background, const QColor& bar) {
  QTextTableCellFormat format = cell.format().toTableCellFormat();
  format.setBackground(background);
  if (bar.isValid()) {
    format.setLeftBorder(Points(2.4));
    format.setLeftBorderStyle(QTextFrameFormat::BorderStyle_Solid);
    format.setLeftBorderBrush(bar);
  }
  cell.setFormat(format);
  Pad(cell, 10, 6.5, 10, 6.5);
}

}  // namespace manual
