// set-manual: sets a manual written in Markdown into a PDF file: title page, contents, chapters,
// links and outline.
//   set-manual MANUAL.md OUT.pdf VERSION
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QHashSeed>
#include <QSaveFile>
#include <cstdio>

#include "tools/manual/Manual.h"

namespace {

int Fail(const QString& message) {
  std::fprintf(stderr, "set-manual: %s\n", qPrintable(message));
  return 1;
}

int SetManual(const QStringList& words) {
  if (words.size() != 4) return Fail(QStringLiteral("usage: set-manual MANUAL.md OUT.pdf VERSION"));
  QFile file(words[1]);
  if (!file.open(QIODevice::ReadOnly))
    return Fail(words[1] + QStringLiteral(": ") + file.errorString());
  const manual::MadeManual made = manual::MakeManual(QString::fromUtf8(file.readAll()),
                                                     QFileInfo(words[1]).absolutePath(), words[3]);
  if (!made.problem.isEmpty()) return Fail(made.problem);
  QSaveFile out(words[2]);
  if (!out.open(QIODevice::WriteOnly) || out.write(made.pdf) != made.pdf.size() || !out.commit()) {
    return Fail(words[2] + QStringLiteral(": ") + out.errorString());
  }
  return 0;
}

}  // namespace

int main(int count, char** words) {
  // The toolkit orders some of its output by hashes: the same text must give the same bytes.
  QHashSeed::setDeterministicGlobalSeed();
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QGuiApplication application(count, words);
  return SetManual(QGuiApplication::arguments());
}
