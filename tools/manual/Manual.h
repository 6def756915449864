// The manual as a whole: a manuscript in Markdown made into the bytes of a PDF file. It owns
// nothing. Needs a QGuiApplication.
#pragma once

#include <QByteArray>
#include <QString>

namespace manual {

struct MadeManual {
  QByteArray pdf;   // empty when it could not be made
  QString problem;  // then: why, for a person
};

// Sets `markdown`. The first heading is the title; the paragraphs and the picture before the second
// one are the title page's, and `version` takes the place of "{version}" there. Pictures are looked
// for below `folder`. The same text gives the same bytes.
MadeManual MakeManual(const QString& markdown, const QString& folder, const QString& version);

}  // namespace manual
