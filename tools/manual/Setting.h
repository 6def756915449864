// Setting: the pieces of a manuscript set into a laid-out document, with a contents page before
// them. It owns the document and the list of headings. The title page is no part of it: page 0 here
// is the second page of the printed manual. One thread.
#pragma once

#include <QPagedPaintDevice>
#include <QString>
#include <QTextCursor>
#include <QTextDocument>
#include <memory>
#include <vector>

#include "tools/manual/Contents.h"
#include "tools/manual/Manuscript.h"
#include "tools/manual/PageBreaks.h"

namespace manual {

class Setting {
 public:
  // Sets `pieces` for `device`; pictures are looked for below `folder`.
  Setting(const std::vector<Piece>& pieces, const QString& folder, QPagedPaintDevice& device);

  const QTextDocument& Document() const { return *document_; }
  const std::vector<SetHeading>& Headings() const { return headings_; }
  // The last thing that is wrong with the manuscript: a picture that cannot be read, a link that
  // leads to no heading, a table without a head. Empty where there is nothing.
  const QString& Problem() const { return problem_; }

 private:
  void SetPiece(const Piece& piece);
  void SetHeadingPiece(const Piece& piece);
  void SetParagraph(const Piece& piece);
  void SetListEntry(const Piece& piece);
  void SetPanel(const Piece& piece);
  void SetTable(const Piece& piece);
  void SetFigure(const Piece& piece);
  void StartBlock(Kind kind, const QTextBlockFormat& format);
  QTextTable* StartTable(Kind kind, int rows, const std::vector<double>& widths);
  void LeaveTable();
  void InsertLine(QTextCursor& cursor, const Line& line, const QTextCharFormat& base);
  void CheckLinks();

  std::unique_ptr<QTextDocument> document_;
  QTextCursor cursor_;
  QString folder_;
  double textWidth_ = 0;
  bool freshBlock_ = true;  // the cursor stands in an empty block that may be formatted
  std::vector<SetItem> items_;
  std::vector<SetHeading> headings_;
  QStringList links_;
  QString problem_;
};

}  // namespace manual
