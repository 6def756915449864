// The manual's setting: what is read from Markdown, what is refused, and that links and outline
// lead somewhere.
#include <gtest/gtest.h>

#include <QFile>
#include <QGuiApplication>
#include <QHashSeed>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <set>

#include "tools/manual/Manual.h"
#include "tools/manual/Manuscript.h"
#include "tools/manual/PdfFile.h"

namespace manual {
namespace {

std::string Kinds(const QString& markdown) {
  constexpr const char* kNames[] = {"heading", "paragraph", "bullet", "step",
                                    "note",    "code",      "table",  "figure"};
  std::string kinds;
  for (const Piece& piece : ReadManuscript(markdown))
    kinds += std::string(kNames[static_cast<int>(piece.kind)]) + " ";
  return kinds;
}

TEST(Manuscript, IsReadInPieces) {
  EXPECT_EQ(Kinds("# A\n\ntext **bold**\n\n- one\n- two\n\n1. first\n\n> note\n\n```\nx\n\n  "
                  "y\n```\n\ntext\n\n"
                  "| a | b |\n|---|---|\n| c | d |\n\n![words](p.png)\n"),
            "heading paragraph bullet bullet step note code paragraph table figure ");
  const std::vector<Piece> pieces = ReadManuscript("a **b** `c` [d](#e)\n\n```\nx\n\n  y\n```\n");
  ASSERT_EQ(pieces.size(), 2U);
  EXPECT_EQ(PlainText(pieces[0].line), "a b c d");
  EXPECT_TRUE(pieces[0].line[1].bold);
  EXPECT_TRUE(pieces[0].line[3].code);
  EXPECT_EQ(pieces[0].line.back().link, "#e");
  EXPECT_EQ(pieces[1].code, QStringList({"x", "", "  y"}))
      << "one tree, with its indents and empty lines";
}

TEST(Manuscript, AnchorsAreMadeOfLettersAndDigits) {
  EXPECT_EQ(AnchorOf("As Save Project (One Tex Folder)"), "as-save-project-one-tex-folder");
  EXPECT_EQ(AnchorOf("What to know"), "what-to-know");
}

TEST(Manual, FaultsOfTheManuscriptAreNamed) {
  const struct {
    const char* text;
    const char* problem;
  } cases[] = {
      {"# T\n\n# A\n\n[x](#nowhere)\n", "The link \"#nowhere\" leads to no heading."},
      {"# T\n\n# A\n\n![x](none.png)\n", "The picture \"none.png\" cannot be read."},
      {"# T\n\n# A\n\n```\nx\n```\n\n| a | b |\n|---|---|\n| c | d |\n", "A table has no head."}};
  for (const auto& each : cases) {
    const MadeManual made = MakeManual(each.text, TEST_SOURCE_DIR, "1");
    EXPECT_TRUE(made.problem.startsWith(each.problem)) << qPrintable(made.problem);
    EXPECT_TRUE(made.pdf.isEmpty());
  }
}

TEST(Manual, TheSameTextGivesTheSameBytes) {
  const QString text = "# T\n\nwords\n\n# A\n\n[to B](#b)\n\n## B\n\ntext\n";
  const QByteArray pdf = MakeManual(text, TEST_SOURCE_DIR, "1").pdf;
  EXPECT_EQ(pdf, MakeManual(text, TEST_SOURCE_DIR, "1").pdf);
  EXPECT_FALSE(pdf.contains("CreationDate"));
}

TEST(PdfFile, RefusesWhatIsNoPdf) {
  const QByteArray pdf = MakeManual("# T\n\n# A\n\ntext\n", TEST_SOURCE_DIR, "1").pdf;
  for (const QByteArray& bytes :
       {QByteArray(), QByteArray("%PDF-1.4\n"), pdf.left(pdf.size() / 2), pdf.mid(8)}) {
    EXPECT_FALSE(PdfFile::Read(bytes).has_value());
  }
}

// The latest text of every object of a PDF file without object streams.
std::map<int, QByteArray> Objects(const QByteArray& pdf) {
  std::map<int, QByteArray> objects;
  static const QRegularExpression begin("(?:^|\\n)(\\d+) 0 obj");
  const QString text = QString::fromLatin1(pdf);
  for (auto it = begin.globalMatch(text); it.hasNext();) {
    const auto match = it.next();
    objects[match.captured(1).toInt()] =
        text.mid(match.capturedEnd(),
                 text.indexOf("endobj", match.capturedEnd()) - match.capturedEnd())
            .toLatin1();
  }
  return objects;
}

// Numbers of the page objects that destinations lead to.
std::multiset<int> Targets(const QByteArray& object) {
  std::multiset<int> pages;
  static const QRegularExpression destination("/Dest \\[(\\d+) 0 R /XYZ 0 [0-9.]+ null\\]");
  for (auto it = destination.globalMatch(QString::fromLatin1(object)); it.hasNext();)
    pages.insert(it.next().captured(1).toInt());
  return pages;
}

TEST(Manual, LinksAndOutlineLeadToPages) {
  QFile file(TEST_PLUGIN_DIR "/Stagemarks/help/SM_Manual.pdf");
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  QFile text(TEST_SOURCE_DIR "/help/manual.md");
  ASSERT_TRUE(text.open(QIODevice::ReadOnly));
  const std::vector<Piece> pieces = ReadManuscript(QString::fromUtf8(text.readAll()));
  std::size_t headings = 0;
  std::size_t listed = 0;
  for (const Piece& piece : pieces) {
    headings += piece.kind == Kind::Heading;
    listed += piece.kind == Kind::Heading && piece.level <= 2;
  }
  const std::map<int, QByteArray> objects = Objects(file.readAll());
  std::size_t links = 0;
  std::size_t entries = 0;
  for (const auto& [number, object] : objects) {
    EXPECT_FALSE(object.contains("/URI (#")) << "object " << number << " is a link to nowhere";
    for (const int page : Targets(object)) {
      ASSERT_TRUE(objects.count(page));
      EXPECT_TRUE(objects.at(page).contains("/Type /Page\n")) << number;
    }
    if (Targets(object).empty()) continue;
    (object.contains("/Subtype /Link") ? links : entries) += 1;
  }
  EXPECT_EQ(entries, headings - 1) << "one for each heading but the title";
  EXPECT_GE(links, 2 * (listed - 1))
      << "two for each line of the contents: its text and its number";
}

}  // namespace
}  // namespace manual

int main(int count, char** words) {
  QHashSeed::setDeterministicGlobalSeed();
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QGuiApplication application(count, words);
  testing::InitGoogleTest(&count, words);
  return RUN_ALL_TESTS();
}
