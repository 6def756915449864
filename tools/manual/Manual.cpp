#include "tools/manual/Manual.h"

#include <QBuffer>
#include <QDir>
#include <QImageReader>
#include <QPdfWriter>

#include "tools/manual/Look.h"
#include "tools/manual/Manuscript.h"
#include "tools/manual/Pages.h"
#include "tools/manual/PdfFile.h"
#include "tools/manual/Setting.h"

namespace manual {

namespace {

// Takes the pieces of the title page off the front of a manuscript.
TitlePage TakeTitle(std::vector<Piece>& pieces, const QDir& folder, const QString& version) {
  TitlePage title;
  std::size_t taken = 0;
  for (; taken < pieces.size() && (taken == 0 || pieces[taken].kind != Kind::Heading); ++taken) {
    const Piece& piece = pieces[taken];
    const QString text = PlainText(piece.line).replace(QStringLiteral("{version}"), version);
    if (piece.kind == Kind::Heading) {
      title.title = text;
    } else if (piece.kind == Kind::Figure) {
      title.picture = folder.filePath(piece.picture);
    } else {
      (title.subtitle.isEmpty() ? title.subtitle : title.imprint) = text;
    }
  }
  pieces.erase(pieces.begin(), pieces.begin() + static_cast<std::ptrdiff_t>(taken));
  return title;
}

std::vector<Destination> PlacesOf(const Setting& setting) {
  std::vector<Destination> places;
  for (const SetHeading& heading : setting.Headings()) {
    places.push_back({heading.text, heading.anchor, heading.level, heading.page + 1,
                      heading.top * 72 / kUnitsPerInch});
  }
  return places;
}

}  // namespace

MadeManual MakeManual(const QString& markdown, const QString& folder, const QString& version) {
  if (const QStringList missing = MissingFonts(); !missing.isEmpty()) {
    return {{},
            QStringLiteral("The fonts %1 are missing.").arg(missing.join(QStringLiteral(", ")))};
  }
  std::vector<Piece> pieces = ReadManuscript(markdown);
  const TitlePage title = TakeTitle(pieces, QDir(folder), version);
  QBuffer buffer;
  buffer.open(QIODevice::WriteOnly);
  QPdfWriter writer(&buffer);
  writer.setPageSize(QPageSize(QPageSize::A4));
  // The margins are the document's own, which headers and footers stand in.
  writer.setPageMargins(QMarginsF());
  writer.setResolution(kUnitsPerInch);
  writer.setTitle(title.title);
  if (!title.picture.isEmpty() && !QImageReader(title.picture).canRead()) {
    return {{}, QStringLiteral("The picture \"%1\" cannot be read.").arg(title.picture)};
  }
  const Setting setting(pieces, folder, writer);
  if (!setting.Problem().isEmpty()) return {{}, setting.Problem()};
  if (!DrawPages(writer, title, setting))
    return {{}, QStringLiteral("The pages could not be drawn.")};

  // The toolkit writes links within a document as addresses, no outline, and the time; all three
  // are mended in the bytes.
  std::optional<PdfFile> pdf = PdfFile::Read(buffer.data());
  const std::vector<Destination> places = PlacesOf(setting);
  if (!pdf || !pdf->LinkTo(places)) return {{}, QStringLiteral("The links could not be written.")};
  pdf->ForgetTime();
  pdf->AddOutline(places);
  return {pdf->Bytes(), {}};
}

}  // namespace manual
