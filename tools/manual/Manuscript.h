// Manuscript: the Markdown text of the manual, read once and handed out piece by piece: headings,
// paragraphs, list entries, notes, code, tables and figures, in order. It owns everything that it
// hands out. One thread.
#pragma once

#include <QString>
#include <QStringList>
#include <vector>

namespace manual {

// A stretch of text with one look.
struct Run {
  QString text;
  bool bold = false;
  bool italic = false;
  bool code = false;
  QString link;  // where it leads: "#anchor" or an address; empty for plain text
};
using Line = std::vector<Run>;

enum class Kind { Heading, Paragraph, Bullet, Step, Note, Code, Table, Figure };

struct Piece {
  Kind kind = Kind::Paragraph;
  int level = 0;                         // of a heading or list entry, from 1
  int number = 0;                        // of a step, from 1
  Line line;                             // of a heading, paragraph, list entry or note
  QStringList code;                      // the lines of a code block
  std::vector<std::vector<Line>> cells;  // of a table by row; the first row is its head
  // File of a figure, as written; its caption is the text of `line`
  QString picture;
};

// Reads a Markdown text. Nothing in it is an error: what Markdown does not know is plain text.
std::vector<Piece> ReadManuscript(const QString& markdown);

// The text of a line without its look.
QString PlainText(const Line& line);

// The name by which a heading is linked to: its letters and digits in lower case, joined by "-".
QString AnchorOf(const QString& heading);

}  // namespace manual
