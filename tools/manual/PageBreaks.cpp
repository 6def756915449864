#include "tools/manual/PageBreaks.h"

#include <QAbstractTextDocumentLayout>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextLayout>
#include <QTextTable>
#include <algorithm>

namespace manual {

namespace {

// The pages that the lines of an item are on, in order. One unit is added, since a line at the very
// top of a page may be reckoned a hair above it.
std::vector<int> PagesOf(const QTextDocument& document, const SetItem& item) {
  std::vector<int> pages;
  const double height = document.pageSize().height();
  for (QTextBlock block = document.findBlock(item.first);
       block.isValid() && block.position() <= item.last; block = block.next()) {
    const double top = document.documentLayout()->blockBoundingRect(block).top();
    for (int line = 0; line < block.layout()->lineCount(); ++line) {
      pages.push_back(static_cast<int>((top + block.layout()->lineAt(line).y() + 1) / height));
    }
  }
  if (pages.empty()) pages.push_back(0);
  return pages;
}

// A table breaks between its rows and shows its head again, unless only these few, its head among
// them, would stand before.
constexpr int kFewRows = 5;

int RowsOnFirstPage(const QTextDocument& document, const SetItem& item) {
  const auto& table = static_cast<const QTextTable&>(*item.frame);
  const auto page = [&](int row) {
    const QTextBlock block = table.cellAt(row, 0).firstCursorPosition().block();
    return static_cast<int>((document.documentLayout()->blockBoundingRect(block).top() + 1) /
                            document.pageSize().height());
  };
  int rows = 1;
  while (rows < table.rows() && page(rows) == page(0)) ++rows;
  return rows;
}

bool IsTorn(const QTextDocument& document, const std::vector<SetItem>& items, std::size_t index) {
  const std::vector<int> pages = PagesOf(document, items[index]);
  const bool split = pages.front() != pages.back();
  switch (items[index].kind) {
    case Kind::Heading:
      return index + 1 < items.size() &&
             pages.front() != PagesOf(document, items[index + 1]).front();
    case Kind::Note:
    case Kind::Code:
    case Kind::Figure:
      return split;
    case Kind::Table:
      return split && RowsOnFirstPage(document, items[index]) <= kFewRows;
    default:
      // A single line at the end of a page, or at the beginning of the next.
      return split && (pages[1] != pages[0] || pages[pages.size() - 2] != pages.back());
  }
}

// First of the items that go to the next page with the one at `index`: the headings before it go
// with it, and so does the paragraph that leads to a panel or picture.
std::size_t FirstToMove(const std::vector<SetItem>& items, std::size_t index) {
  if (items[index].frame && index > 0 && items[index - 1].kind == Kind::Paragraph) --index;
  while (index > 0 && items[index - 1].kind == Kind::Heading) --index;
  return index;
}

void BeginPage(QTextDocument& document, const SetItem& item) {
  if (item.frame) {
    QTextFrameFormat format = item.frame->frameFormat();
    format.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
    item.frame->setFrameFormat(format);
    return;
  }
  QTextCursor cursor(&document);
  cursor.setPosition(item.first);
  QTextBlockFormat format = cursor.blockFormat();
  format.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
  cursor.setBlockFormat(format);
}

}  // namespace

// From front to back, each after those before it are settled: a break moves everything behind it.
void BreakPages(QTextDocument& document, const std::vector<SetItem>& items) {
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (!IsTorn(document, items, i)) continue;
    BeginPage(document, items[FirstToMove(items, i)]);
  }
}

}  // namespace manual
