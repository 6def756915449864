// The contents page, and the headings that it lists. It owns nothing: the table belongs to the
// document.
#pragma once

#include <QString>
#include <QTextCursor>
#include <QTextTable>
#include <vector>

#include "tools/manual/Manuscript.h"

namespace manual {

// A heading as set: where it stands and what links to it.
struct SetHeading {
  int level = 1;
  QString text;
  QString anchor;
  int position = 0;  // in the document
  int page = 0;      // of the document, from 0
  double top = 0;    // from the top of the page, in layout units
};

// Fills in page and top of each.
void PlaceHeadings(const QTextDocument& document, std::vector<SetHeading>& headings);

class Contents {
 public:
  // Writes the page at `cursor`: chapters and their sections, linked, without numbers as yet.
  Contents(QTextCursor& cursor, const std::vector<Piece>& pieces, double width);
  // Fills in the page numbers; no line moves.
  void Number(const std::vector<SetHeading>& headings);

 private:
  void WriteRow(int row, const Piece& piece);

  QTextTable* table_ = nullptr;
};

}  // namespace manual
