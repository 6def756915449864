// Where pages end: a heading stays with its text, a note, a tree and a picture stay whole, and no
// line of a paragraph is left alone on a page.
#pragma once

#include <QTextDocument>
#include <QTextFrame>
#include <vector>

#include "tools/manual/Manuscript.h"

namespace manual {

// A piece as set: the positions that it takes in the document.
struct SetItem {
  Kind kind = Kind::Paragraph;
  int first = 0;
  int last = 0;
  QTextFrame* frame = nullptr;  // of a table, note or code; owned by the document
};

// Begins new pages before items that would be torn otherwise. `items` are in the order of the
// document.
void BreakPages(QTextDocument& document, const std::vector<SetItem>& items);

}  // namespace manual
