// PdfFile: a PDF file as Qt writes it, to which objects are added and in which small ones are
// replaced. The new ones follow the old bytes with a cross-reference of their own, as the format
// provides for. Qt writes links inside a document as addresses ("#anchor") and no outline; this
// gives both what a reader can follow. It owns the bytes. One thread.
#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <optional>
#include <vector>

namespace manual {

// A place in the file that links lead to.
struct Destination {
  QString title;
  QString anchor;
  int level = 1;
  int page = 0;    // from 0
  double top = 0;  // from the top of the page, in points
};

class PdfFile {
 public:
  // Reads a PDF of the plain kind that is expected here; nothing where the bytes are none.
  static std::optional<PdfFile> Read(const QByteArray& bytes);

  // Takes the time out: the same text gives the same file.
  void ForgetTime();
  // Turns the links "#anchor" into links to `places`. False where one has no place.
  bool LinkTo(const std::vector<Destination>& places);
  // Lets readers show `places` as an outline beside the pages.
  void AddOutline(const std::vector<Destination>& places);

  // The whole file with what was added.
  QByteArray Bytes() const;

 private:
  explicit PdfFile(QByteArray bytes) : bytes_(std::move(bytes)) {}
  bool ReadObjects();
  bool ReadPages();
  QByteArray Object(int number) const;
  QByteArray PlaceOf(const Destination& place) const;

  QByteArray bytes_;
  QMap<int, qsizetype> offsets_;    // of the objects in bytes_, by number
  QMap<int, QByteArray> replaced_;  // by number, as they will stand in the file
  std::vector<int> pages_;          // object numbers
  std::vector<double> heights_;     // of the pages, in points
  int count_ = 0;                   // objects, the free one with number 0 included
  int root_ = 0;
  int info_ = 0;
  qsizetype start_ = 0;  // of the cross-reference
};

}  // namespace manual
