#include "tools/manual/Manuscript.h"

#include <QTextBlock>
#include <QTextDocument>
#include <QTextFrame>
#include <QTextList>
#include <QTextTable>

namespace manual {

namespace {

Run ReadRun(const QTextFragment& fragment) {
  const QTextCharFormat format = fragment.charFormat();
  Run run;
  run.text = fragment.text();
  run.bold = format.fontWeight() >= QFont::DemiBold;
  run.italic = format.fontItalic();
  run.code = format.fontFixedPitch();
  run.link = format.anchorHref();
  return run;
}

Line ReadLine(const QTextBlock& block) {
  Line line;
  for (auto it = block.begin(); !it.atEnd(); ++it) {
    if (!it.fragment().charFormat().isImageFormat()) line.push_back(ReadRun(it.fragment()));
  }
  return line;
}

bool IsCode(const QTextBlock& block) {
  return block.blockFormat().hasProperty(QTextFormat::BlockCodeFence) ||
         block.blockFormat().hasProperty(QTextFormat::BlockCodeLanguage);
}

// The picture of a block that shows one; its text stands in the image's format.
bool ReadFigure(const QTextBlock& block, Piece& piece) {
  for (auto it = block.begin(); !it.atEnd(); ++it) {
    const QTextCharFormat format = it.fragment().charFormat();
    if (!format.isImageFormat()) continue;
    piece.kind = Kind::Figure;
    piece.picture = format.toImageFormat().name();
    piece.line = {{format.property(QTextFormat::ImageAltText).toString(), false, false, false, {}}};
    return true;
  }
  return false;
}

Piece ReadBlock(const QTextBlock& block) {
  Piece piece;
  if (ReadFigure(block, piece)) return piece;
  piece.line = ReadLine(block);
  if (const int level = block.blockFormat().headingLevel()) {
    piece.kind = Kind::Heading;
    piece.level = level;
    // The reader makes headings bold itself; our look for them says so, too.
    for (Run& run : piece.line) run.bold = false;
  } else if (const QTextList* list = block.textList()) {
    const bool numbered = list->format().style() == QTextListFormat::ListDecimal;
    piece.kind = numbered ? Kind::Step : Kind::Bullet;
    piece.level = list->format().indent();
    piece.number = list->itemNumber(block) + 1;
  } else if (block.blockFormat().hasProperty(QTextFormat::BlockQuoteLevel)) {
    piece.kind = Kind::Note;
  }
  return piece;
}

Piece ReadTable(const QTextTable& table) {
  Piece piece;
  piece.kind = Kind::Table;
  for (int row = 0; row < table.rows(); ++row) {
    auto& cells = piece.cells.emplace_back();
    for (int column = 0; column < table.columns(); ++column) {
      cells.push_back(ReadLine(table.cellAt(row, column).firstCursorPosition().block()));
    }
  }
  return piece;
}

}  // namespace

// The toolkit's reader gives a block for each line of code, and frames for tables: lines of one
// block of code are put together again.
std::vector<Piece> ReadManuscript(const QString& markdown) {
  QTextDocument document;
  document.setMarkdown(markdown, QTextDocument::MarkdownDialectGitHub);
  std::vector<Piece> pieces;
  bool inCode = false;
  const QTextFrame* root = document.rootFrame();
  for (auto it = root->begin(); !it.atEnd(); ++it) {
    if (const auto* table = qobject_cast<const QTextTable*>(it.currentFrame())) {
      pieces.push_back(ReadTable(*table));
      inCode = false;
      continue;
    }
    const QTextBlock block = it.currentBlock();
    if (!block.isValid()) continue;
    if (IsCode(block)) {
      if (!inCode) pieces.push_back({Kind::Code, 0, 0, {}, {}, {}, {}});
      pieces.back().code << block.text();
      inCode = true;
      continue;
    }
    inCode = false;
    // Of length 1 are those that hold their end only.
    if (block.length() > 1) pieces.push_back(ReadBlock(block));
  }
  return pieces;
}

QString PlainText(const Line& line) {
  QString text;
  for (const Run& run : line) text += run.text;
  return text;
}

QString AnchorOf(const QString& heading) {
  QString anchor;
  for (const QChar letter : heading.toLower()) {
    if (letter.isLetterOrNumber()) {
      anchor += letter;
    } else if (!anchor.isEmpty() && !anchor.endsWith(u'-')) {
      anchor += u'-';
    }
  }
  return anchor.endsWith(u'-') ? anchor.chopped(1) : anchor;
}

}  // namespace manual
