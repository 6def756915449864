// Labels (in bold type) and messages that the manual and the README quote are shown on the screen.
#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <sstream>

#include "tests/support/ScratchFolder.h"
#include "tests/support/TextSearch.h"

namespace {

namespace fs = std::filesystem;
using tests::Matches;
using tests::ReadText;

const fs::path kSources = TEST_SOURCE_DIR;

// A label as a person reads it: without the mark of a shortcut, the dots of a menu entry and blanks
// around it.
std::string AsRead(std::string label) {
  std::erase(label, '&');
  for (const std::string& end : {std::string("..."), std::string("\xE2\x80\xA6")}) {
    if (label.ends_with(end)) label.resize(label.size() - end.size());
  }
  const std::size_t begin = label.find_first_not_of(' ');
  return begin == std::string::npos ? ""
                                    : label.substr(begin, label.find_last_not_of(' ') + 1 - begin);
}

// Every text in the code below a folder.
std::set<std::string> TextsIn(const fs::path& folder) {
  std::set<std::string> texts;
  for (const auto& entry : fs::recursive_directory_iterator(kSources / folder)) {
    const fs::path suffix = entry.path().extension();
    if (suffix != ".h" && suffix != ".cpp") continue;
    for (const std::string& text : Matches(ReadText(entry.path()), "\"((?:[^\"\\\\\n]|\\\\.)*)\""))
      texts.insert(AsRead(text));
  }
  return texts;
}

TEST(Labels, OfManualAndReadmeAreOnTheScreen) {
  std::set<std::string> shown = TextsIn("source");
  shown.merge(TextsIn("program/desktop"));
  std::size_t labels = 0;
  for (const char* document : {"help/manual.md", "README.md", "CHANGELOG.md"}) {
    for (const std::string& bold :
         Matches(ReadText(kSources / document), "\\*\\*([^*\n]+)\\*\\*")) {
      if (bold.back() == '.') continue;  // the first words of a note
      std::istringstream path(bold);     // "File > Save As"
      for (std::string label; std::getline(path, label, '>'); ++labels) {
        EXPECT_TRUE(shown.count(AsRead(label))) << label << " in " << document;
      }
    }
  }
  EXPECT_GT(labels, 80U);
}

TEST(Labels, OfTheDialogAreInTheManual) {
  const std::string manual = ReadText(kSources / "help/manual.md");
  std::size_t labels = 0;
  for (const char* keys :
       {"source/Stagemarks/keys/Gadgets.h", "source/Stagemarks/keys/Options.h"}) {
    for (const std::string& label : Matches(ReadText(kSources / keys), ", \"([A-Z][^\"]*)\"\\}")) {
      ++labels;
      EXPECT_NE(manual.find(label), std::string::npos) << label;
    }
  }
  EXPECT_GE(labels, 29U);
}

// Messages stand in the manual word for word; "..." takes the place of a name.
TEST(Labels, MessagesOfTheDialogAreInTheManual) {
  const std::string manual = ReadText(kSources / "help/manual.md");
  const std::string page = manual.substr(manual.find("## Every message"));
  std::size_t messages = 0;
  for (const std::string& text :
       Matches(ReadText(kSources / "source/Stagemarks/keys/Messages.h"), "\"([^\"\n]+)\"")) {
    const bool isMessage = text.find_first_of(".?!") != std::string::npos ||
                           text.find("irectory") != std::string::npos;
    if (!isMessage || text.ends_with(".h") || text[0] == '\\') continue;
    ++messages;
    EXPECT_NE(page.find(AsRead(text)), std::string::npos) << text;
  }
  EXPECT_GE(messages, 12U);
}

}  // namespace
