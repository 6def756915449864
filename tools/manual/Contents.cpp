#include "tools/manual/Contents.h"

#include <QAbstractTextDocumentLayout>
#include <QTextBlock>
#include <QTextDocument>

#include "tools/manual/Look.h"
#include "tools/manual/Tables.h"

namespace manual {

namespace {

constexpr double kNumberWidth = Points(40);

// Chapters and their sections: a third level would fill pages.
bool IsListed(int level) { return level <= 2; }

}  // namespace

void PlaceHeadings(const QTextDocument& document, std::vector<SetHeading>& headings) {
  const double height = document.pageSize().height();
  for (SetHeading& heading : headings) {
    const QRectF box =
        document.documentLayout()->blockBoundingRect(document.findBlock(heading.position));
    // The document is one tall strip, of which each page shows a piece.
    heading.page = static_cast<int>(box.top() / height);
    heading.top = box.top() - heading.page * height;
  }
}

Contents::Contents(QTextCursor& cursor, const std::vector<Piece>& pieces, double width) {
  std::vector<const Piece*> listed;
  for (const Piece& piece : pieces) {
    if (piece.kind == Kind::Heading && IsListed(piece.level)) listed.push_back(&piece);
  }
  QTextBlockFormat heading = HeadingBlock(1);
  // A chapter begins a page; this one is on the first one anyway, and a break would leave that
  // empty.
  heading.setPageBreakPolicy(QTextFormat::PageBreak_Auto);
  cursor.setBlockFormat(heading);
  cursor.insertText(QStringLiteral("Contents"), HeadingText(1));
  if (listed.empty()) return;
  table_ = InsertPlainTable(cursor, static_cast<int>(listed.size()),
                            {width - kNumberWidth, kNumberWidth});
  for (int row = 0; row < table_->rows(); ++row) WriteRow(row, *listed[row]);
}

void Contents::WriteRow(int row, const Piece& piece) {
  const bool chapter = piece.level == 1;
  const QString text = PlainText(piece.line);
  QTextCharFormat format = ContentsText(chapter);
  format.setAnchor(true);
  format.setAnchorHref(u'#' + AnchorOf(text));
  // Both the text and the number are links.
  for (int column = 0; column < 2; ++column) {
    const QTextTableCell cell = table_->cellAt(row, column);
    Pad(cell, column == 0 && !chapter ? 14 : 0, chapter ? 8 : 1.6, 0, 1.6);
    QTextCursor inside = cell.firstCursorPosition();
    QTextBlockFormat block = CellBlock();
    block.setAlignment(column == 0 ? Qt::AlignLeft : Qt::AlignRight);
    inside.setBlockFormat(block);
    inside.insertText(column == 0 ? text : QStringLiteral("0"), format);
  }
}

// A number takes the place of a zero in the same type. The title page comes before the document,
// and pages count from 1.
void Contents::Number(const std::vector<SetHeading>& headings) {
  int row = 0;
  for (const SetHeading& heading : headings) {
    if (!IsListed(heading.level)) continue;
    QTextCursor cursor = table_->cellAt(row++, 1).firstCursorPosition();
    cursor.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
    cursor.insertText(QString::number(heading.page + 2), cursor.charFormat());
  }
}

}  // namespace manual
