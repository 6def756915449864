#include "tools/manual/Tables.h"

#include <QFontMetricsF>
#include <algorithm>
#include <numeric>

#include "tools/manual/Look.h"

namespace manual {

namespace {

constexpr double kColumnGap = Points(11);

}  // namespace

QTextTable* InsertPlainTable(QTextCursor& cursor, int rows, const std::vector<double>& widths) {
  QTextTableFormat format;
  format.setBorder(0);
  format.setCellPadding(0);
  format.setCellSpacing(0);
  format.setTopMargin(Points(3));
  format.setBottomMargin(Points(10));
  // Repeated at the top of each page.
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
      wanted[column] =
          std::max(wanted[column], metrics.horizontalAdvance(PlainText(row[column])) + kColumnGap);
    }
  }
  const double first = std::min(wanted[0], total * 0.4);
  const double sum = std::accumulate(wanted.begin(), wanted.end(), 0.0);
  if (sum <= total || wanted.size() == 1) {
    // The last column takes what is left.
    wanted.back() += total - sum;
    return wanted;
  }
  const double others = sum - wanted[0];
  for (double& width : wanted) width = (total - first) * width / others;
  wanted[0] = first;
  return wanted;
}

void Pad(QTextTableCell cell, double left, double top, double right, double bottom) {
  QTextTableCellFormat format = cell.format().toTableCellFormat();
  format.setLeftPadding(Points(left));
  format.setTopPadding(Points(top));
  format.setRightPadding(Points(right));
  format.setBottomPadding(Points(bottom));
  cell.setFormat(format);
}

// Rules stand above rows, because the toolkit draws one below the last row of a page at the end of
// the page.
void FormatCell(const QTextTable& table, QTextTableCell cell) {
  QTextTableCellFormat format = cell.format().toTableCellFormat();
  const bool head = cell.row() == 0;
  if (cell.row() > 1) {
    format.setTopBorder(Points(0.4));
    format.setTopBorderStyle(QTextFrameFormat::BorderStyle_Solid);
    format.setTopBorderBrush(kRule);
  }
  if (head || cell.row() + 1 == table.rows()) {
    format.setBottomBorder(Points(head ? 0.9 : 0.4));
    format.setBottomBorderStyle(QTextFrameFormat::BorderStyle_Solid);
    format.setBottomBorderBrush(head ? kAccent : kRule);
  }
  cell.setFormat(format);
  Pad(cell, 0, 3.4, cell.column() + 1 == table.columns() ? 0 : 10, 4);
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
