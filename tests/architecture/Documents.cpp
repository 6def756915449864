// The documents' law: every file, class, function and constant that they name in backticks exists,
// every link leads to a file, and the page about the host's interface names every published class.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <regex>
#include <set>
#include <sstream>

#include "tests/support/ScratchFolder.h"

namespace {

namespace fs = std::filesystem;
using tests::ReadText;

const fs::path kRoot = TEST_SOURCE_DIR;

// Code without its comments, and without the contents of its texts unless they are wanted.
std::string WithoutComments(const std::string& code, bool keepTexts) {
  std::string plain;
  char quote = 0;
  for (std::size_t i = 0; i < code.size(); ++i) {
    const bool comment = !quote && code[i] == '/' && i + 1 < code.size() &&
                         (code[i + 1] == '/' || code[i + 1] == '*');
    if (comment) {
      const bool line = code[i + 1] == '/';
      const std::size_t end = line ? code.find('\n', i) : code.find("*/", i + 2);
      if (end == std::string::npos) break;
      i = line ? end : end + 1;
      plain += '\n';
      continue;
    }
    if (quote && code[i] == '\\') {
      ++i;
      plain += ' ';
      continue;
    }
    const bool inText = quote != 0;
    if (code[i] == quote) {
      quote = 0;
    } else if (!quote && (code[i] == '"' ||
                          (code[i] == '\'' &&
                           (i == 0 || !std::isalnum(static_cast<unsigned char>(code[i - 1])))))) {
      quote = code[i];
    }
    plain += (inText || quote) && !keepTexts ? ' ' : code[i];
  }
  return plain;
}

std::set<std::string> WordsOf(const std::string& text) {
  std::set<std::string> words;
  std::string word;
  for (const char letter : text + " ") {
    if (std::isalnum(static_cast<unsigned char>(letter)) || letter == '_') {
      word += letter;
    } else if (!word.empty()) {
      words.insert(std::exchange(word, {}));
    }
  }
  return words;
}

// Names, words and build files of the source tree, which the documents are checked against.
struct Tree {
  std::set<std::string> files;  // names, without their folders
  std::set<std::string> words;  // of all code
  // Words of the files that declare a class or namespace
  std::map<std::string, std::set<std::string>> inScope;
  std::string build;  // all build files and scripts
};

void AddFile(Tree& tree, const fs::path& file) {
  const std::string path = fs::relative(file, kRoot);
  const std::string suffix = file.extension();
  tree.files.insert(file.filename());
  if (suffix == ".h" || suffix == ".cpp") {
    const std::string code = WithoutComments(ReadText(file), path.rfind("tests/", 0) != 0);
    const std::set<std::string> words = WordsOf(code);
    static const std::regex declared("\\b(?:class|struct|namespace|enum)\\s+(\\w+)[^;{}()]*\\{");
    for (std::sregex_iterator it(code.begin(), code.end(), declared), end; it != end; ++it) {
      tree.inScope[(*it)[1]].insert(words.begin(), words.end());
    }
    tree.words.insert(words.begin(), words.end());
  } else if (file.filename() == "CMakeLists.txt" || suffix == ".cmake" || suffix == ".sh") {
    tree.build += ReadText(file);
  }
}

const Tree& TheTree() {
  static const Tree tree = [] {
    Tree made;
    for (const auto& top : fs::directory_iterator(kRoot)) {
      const std::string name = top.path().filename();
      if (name.front() == '.' || name.rfind("build", 0) == 0 || name == "out") continue;
      if (!top.is_directory()) {
        AddFile(made, top.path());
        continue;
      }
      for (const auto& entry : fs::recursive_directory_iterator(top.path())) {
        if (entry.is_regular_file()) AddFile(made, entry.path());
      }
    }
    return made;
  }();
  return tree;
}

bool IsPath(const std::string& name) {
  const std::size_t slash = name.find('/');
  return slash != std::string::npos && name.find_first_of(" *<>{}") == std::string::npos &&
         fs::is_directory(kRoot / name.substr(0, slash));
}

// Whether a class or namespace is declared in a file that has this word.
bool InScope(const std::string& scope, const std::string& name) {
  const auto found = TheTree().inScope.find(scope);
  return found != TheTree().inScope.end() && found->second.count(name);
}

// Why what stands in backticks is wrong; empty where it is right or no name of something in the
// tree.
std::string Complaint(std::string name) {
  static const std::regex identifier("(?:(\\w+)::)*(\\w+)(?:\\(\\))?");
  static const std::regex file("[\\w.-]+\\.(?:h|cpp|md|txt|cmake|sh|map)");
  static const std::regex option("-D(\\w+)=\\w+");
  std::smatch match;
  if (std::regex_match(name, match, option)) {
    return TheTree().build.find(match[1]) == std::string::npos
               ? "no such option of the build: " + name
               : "";
  }
  if (IsPath(name)) {
    const bool made = TheTree().build.find(fs::path(name).filename()) != std::string::npos;
    return fs::exists(kRoot / name) || made ? "" : "no such file: " + name;
  }
  if (std::regex_match(name, file))
    return TheTree().files.count(name) ? "" : "no such file: " + name;
  if (name.rfind("test_", 0) == 0)
    return fs::is_directory(kRoot / "tests" / name.substr(5)) ? "" : "no such test: " + name;
  if (!std::regex_match(name, match, identifier)) return "";
  const std::string last = match[2];
  const bool code = std::isupper(static_cast<unsigned char>(last.front())) ||
                    last.find('_') != std::string::npos ||
                    std::regex_match(last, std::regex("k[A-Z]\\w*")) ||
                    name.find(':') != std::string::npos || name.back() == ')';
  if (!code) return "";
  const bool known = match[1].matched ? InScope(match[1], last)
                                      : TheTree().words.count(last) || TheTree().files.count(last);
  return known ? "" : "no such name: " + name;
}

std::vector<fs::path> Documents() {
  std::vector<fs::path> documents;
  for (const fs::path& folder :
       {kRoot, kRoot / "docs", kRoot / "docs/decisions", kRoot / "scenes"}) {
    for (const auto& entry : fs::directory_iterator(folder)) {
      if (entry.path().extension() == ".md") documents.push_back(entry.path());
    }
  }
  return documents;
}

// The text of a document without its blocks of code.
std::string Prose(const fs::path& document) {
  std::string prose;
  bool fenced = false;
  std::istringstream lines(ReadText(document));
  for (std::string line; std::getline(lines, line);) {
    const bool fence = line.rfind("```", 0) == 0;
    if (fence) fenced = !fenced;
    if (!fence && !fenced && line.rfind("    ", 0) != 0) prose += line + "\n";
  }
  return prose;
}

TEST(Documents, NameOnlyWhatExists) {
  const std::regex span("`([^`\n]+)`");
  std::size_t names = 0;
  for (const fs::path& document : Documents()) {
    const std::string prose = Prose(document);
    for (std::sregex_iterator it(prose.begin(), prose.end(), span), end; it != end; ++it, ++names) {
      EXPECT_EQ(Complaint((*it)[1]), "") << fs::relative(document, kRoot);
    }
  }
  EXPECT_GT(names, 200U);
}

TEST(Documents, DrawingsNameFilesThatExist) {
  const std::regex file("[\\w-]+\\.(?:h|cpp)\\b");
  const std::string drawing = ReadText(kRoot / "docs/images/record-element.svg");
  const std::sregex_iterator first(drawing.begin(), drawing.end(), file);
  EXPECT_GT(std::distance(first, std::sregex_iterator()), 10);
  for (std::sregex_iterator it = first; it != std::sregex_iterator(); ++it) {
    EXPECT_TRUE(TheTree().files.count(it->str())) << it->str();
  }
}

TEST(Documents, LinksLeadToFiles) {
  const std::regex link("\\]\\(([^)#:\\s]+)(?:#[^)]*)?\\)");
  std::size_t links = 0;
  for (const fs::path& document : Documents()) {
    const std::string prose = Prose(document);
    for (std::sregex_iterator it(prose.begin(), prose.end(), link), end; it != end; ++it, ++links) {
      EXPECT_TRUE(fs::exists(document.parent_path() / (*it)[1].str()))
          << fs::relative(document, kRoot) << " links to " << (*it)[1];
    }
  }
  EXPECT_GT(links, 5U);
}

TEST(Documents, PageOfTheInterfaceNamesEveryClass) {
  const std::string page = ReadText(kRoot / "docs/HOST_INTERFACE.md");
  const std::regex declared("^(?:class|struct) (\\w+)[^;]*\\{", std::regex::multiline);
  std::size_t classes = 0;
  for (const auto& entry : fs::directory_iterator(kRoot / "host")) {
    const std::string header = ReadText(entry.path());
    for (std::sregex_iterator it(header.begin(), header.end(), declared), end; it != end; ++it) {
      if (header.rfind("namespace host", it->position()) == std::string::npos) continue;
      ++classes;
      EXPECT_NE(page.find("`" + (*it)[1].str() + "`"), std::string::npos)
          << (*it)[1] << " of " << entry.path().filename();
    }
  }
  EXPECT_GT(classes, 40U);
}

TEST(Documents, WrongNamesAreSeen) {
  for (const char* wrong :
       {"engine/scene/NoSuch.h", "NoSuch.cpp", "NoSuchFunction", "SMDialog::NoSuch", "NoSuch()",
        "kNoSuch", "NO_SUCH", "test_nosuch", "-DSTAGEMARKS_NOSUCH=ON", "String::CreateLayout"}) {
    EXPECT_NE(Complaint(wrong), "") << wrong;
  }
  for (const char* right :
       {"engine/scene/TreeWalk.h", "TreeWalk.h", "SMDialog::Command", "GeFCopyFile", "kOptions",
        "COPY_NO_BITS", "test_undo", "-DSTAGEMARKS_DESKTOP=OFF", "engine/core", "varint",
        "./test --lint", "help/SM_Manual.pdf"}) {
    EXPECT_EQ(Complaint(right), "") << right;
  }
  const std::string code = "a /* b */ c // d\n\"e // f\" 'g' 1'000";
  EXPECT_EQ(WordsOf(WithoutComments(code, false)), (std::set<std::string>{"1", "000", "a", "c"}));
  EXPECT_EQ(WordsOf(WithoutComments(code, true)),
            (std::set<std::string>{"1", "000", "a", "c", "e", "f", "g"}));
}

}  // namespace
