#include "tools/manual/Setting.h"

#include <QAbstractTextDocumentLayout>
#include <QDir>
#include <QImageReader>
#include <QRegularExpression>
#include <QTextBlock>
#include <QTextTable>
#include <algorithm>

#include "tools/manual/Look.h"
#include "tools/manual/Tables.h"

namespace manual {

namespace {

// Typewriter's apostrophes as a printer sets them.
QString Typeset(QString text) {
  static const QRegularExpression apostrophe(QStringLiteral("(?<=\\w)'"));
  return text.replace(apostrophe, QStringLiteral("\u2019"));
}

}  // namespace

Setting::Setting(const std::vector<Piece>& pieces, const QString& folder, QPagedPaintDevice& device)
    : document_(std::make_unique<QTextDocument>()), cursor_(document_.get()), folder_(folder) {
  // Laid out for the device that draws it: a screen's resolution would break lines elsewhere.
  document_->documentLayout()->setPaintDevice(&device);
  document_->setUseDesignMetrics(true);
  document_->setDefaultFont(BodyText().font());
  const QSizeF page(device.width(), device.height());
  document_->setPageSize(page);
  QTextFrameFormat frame;
  frame.setLeftMargin(kPageMargins.left());
  frame.setTopMargin(kPageMargins.top());
  frame.setRightMargin(kPageMargins.right());
  frame.setBottomMargin(kPageMargins.bottom());
  document_->rootFrame()->setFrameFormat(frame);
  textWidth_ = page.width() - kPageMargins.left() - kPageMargins.right();

  Contents contents(cursor_, pieces, textWidth_);
  cursor_.movePosition(QTextCursor::End);
  for (const Piece& piece : pieces) SetPiece(piece);
  // In this order: breaks move headings, and the contents print where they came to stand.
  BreakPages(*document_, items_);
  PlaceHeadings(*document_, headings_);
  contents.Number(headings_);
  CheckLinks();
}

void Setting::SetPiece(const Piece& piece) {
  switch (piece.kind) {
    case Kind::Heading:
      return SetHeadingPiece(piece);
    case Kind::Paragraph:
      return SetParagraph(piece);
    case Kind::Bullet:
    case Kind::Step:
      return SetListEntry(piece);
    case Kind::Note:
    case Kind::Code:
      return SetPanel(piece);
    case Kind::Table:
      return SetTable(piece);
    case Kind::Figure:
      return SetFigure(piece);
  }
}

// The space above a heading counts only below another block, not below a table.
void Setting::SetHeadingPiece(const Piece& piece) {
  if (freshBlock_) {
    cursor_.setBlockFormat(HairBlock());
    freshBlock_ = false;
  }
  StartBlock(piece.kind, HeadingBlock(piece.level));
  const QString text = PlainText(piece.line);
  headings_.push_back({piece.level, text, AnchorOf(text), cursor_.position(), 0, 0});
  cursor_.insertText(text, HeadingText(piece.level));
}

void Setting::SetParagraph(const Piece& piece) {
  const bool afterList =
      !items_.empty() && (items_.back().kind == Kind::Bullet || items_.back().kind == Kind::Step);
  QTextBlockFormat block = BodyBlock();
  // Entries of a list stand close; the paragraph behind it keeps its distance.
  if (afterList) block.setTopMargin(block.bottomMargin());
  StartBlock(piece.kind, block);
  InsertLine(cursor_, piece.line, BodyText());
}

void Setting::SetListEntry(const Piece& piece) {
  StartBlock(piece.kind, ListBlock(piece.level));
  QTextCharFormat mark = BodyText();
  mark.setForeground(kAccent);
  cursor_.insertText(piece.kind == Kind::Step ? QStringLiteral("%1.\t").arg(piece.number)
                                              : QStringLiteral("\u2022\t"),
                     mark);
  InsertLine(cursor_, piece.line, BodyText());
}

// Notes and code stand in one cell with a background.
void Setting::SetPanel(const Piece& piece) {
  const bool note = piece.kind == Kind::Note;
  QTextTable* panel = StartTable(piece.kind, 1, {textWidth_});
  FormatPanel(panel->cellAt(0, 0), note ? kNote : kPanel, note ? kAccent : QColor());
  QTextCursor inside = panel->cellAt(0, 0).firstCursorPosition();
  inside.setBlockFormat(note ? NoteBlock() : CellBlock());
  if (note) {
    InsertLine(inside, piece.line, BodyText());
  } else {
    inside.insertText(piece.code.join(QChar(QChar::LineSeparator)), CodeText());
  }
  LeaveTable();
}

void Setting::SetTable(const Piece& piece) {
  const auto& head = piece.cells.front();
  // Better no manual than one with a table that lost its head.
  if (head.front().empty()) {
    problem_ = QStringLiteral(
        "A table has no head. The reader loses that of a table just after code: put a sentence "
        "between.");
  }
  QTextTable* table = StartTable(piece.kind, static_cast<int>(piece.cells.size()),
                                 ColumnWidths(piece.cells, textWidth_));
  for (int row = 0; row < table->rows(); ++row) {
    for (int column = 0; column < table->columns(); ++column) {
      const QTextTableCell cell = table->cellAt(row, column);
      FormatCell(*table, cell);
      QTextCursor inside = cell.firstCursorPosition();
      inside.setBlockFormat(CellBlock());
      InsertLine(inside, piece.cells[row][column], CellText(row == 0));
    }
  }
  LeaveTable();
}

void Setting::SetFigure(const Piece& piece) {
  const QString file = QDir(folder_).filePath(piece.picture);
  const QSize size = QImageReader(file).size();
  if (!size.isValid()) {
    problem_ = QStringLiteral("The picture \"%1\" cannot be read.").arg(piece.picture);
    return;
  }
  StartBlock(piece.kind, PictureBlock());
  const double limit = document_->pageSize().height() * kTallestPicture;
  // Never enlarged beyond what the screen's pixels bear.
  const double scale =
      std::min({textWidth_ / size.width(), limit / size.height(), kLargestPictureScale});
  QTextImageFormat image;
  image.setName(file);
  image.setWidth(size.width() * scale);
  image.setHeight(size.height() * scale);
  cursor_.insertImage(image);
  cursor_.insertBlock(CaptionBlock());
  cursor_.insertText(PlainText(piece.line), CaptionText());
  // The caption belongs to the picture, and stays on its page.
  items_.back().last = cursor_.position();
}

void Setting::StartBlock(Kind kind, const QTextBlockFormat& format) {
  if (freshBlock_) {
    cursor_.setBlockFormat(format);
  } else {
    cursor_.insertBlock(format, BodyText());
  }
  freshBlock_ = false;
  items_.push_back({kind, cursor_.position(), cursor_.position(), nullptr});
}

QTextTable* Setting::StartTable(Kind kind, int rows, const std::vector<double>& widths) {
  // An empty line between two tables is not meant to be seen
  if (freshBlock_) cursor_.setBlockFormat(HairBlock());
  QTextTable* table = InsertPlainTable(cursor_, rows, widths);
  items_.push_back({kind, table->firstPosition(), table->lastPosition(), table});
  return table;
}

void Setting::LeaveTable() {
  items_.back().last = static_cast<QTextTable*>(items_.back().frame)->lastPosition();
  cursor_.movePosition(QTextCursor::End);
  // The toolkit leaves an empty block behind each table, which is used for what comes next.
  freshBlock_ = true;
}

void Setting::InsertLine(QTextCursor& cursor, const Line& line, const QTextCharFormat& base) {
  for (const Run& run : line) {
    QTextCharFormat format = base;
    // A little smaller: letters of one width look larger than the text around them.
    QFont font = run.code ? Mono(base.font().pointSizeF() - 0.7) : base.font();
    font.setBold(run.bold || base.font().bold());
    font.setItalic(run.italic);
    format.setFont(font);
    if (!run.link.isEmpty()) {
      format.setAnchor(true);
      format.setAnchorHref(run.link);
      format.setForeground(kAccent);
      links_ << run.link;
    }
    cursor.insertText(run.code ? run.text : Typeset(run.text), format);
  }
}

void Setting::CheckLinks() {
  for (const QString& link : links_) {
    const auto isTarget = [&](const SetHeading& heading) { return link.mid(1) == heading.anchor; };
    if (!link.startsWith(u'#') || std::any_of(headings_.begin(), headings_.end(), isTarget))
      continue;
    problem_ = QStringLiteral("The link \"%1\" leads to no heading.").arg(link);
  }
}

}  // namespace manual
