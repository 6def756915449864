// The folders' law: reads every include of the tree and fails on one that cmake/layers.txt does not
// allow.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>

#include "tests/support/ScratchFolder.h"

namespace {

namespace fs = std::filesystem;
using tests::ReadText;

struct Rule {
  std::set<std::string> folders;
  std::set<std::string> libraries;
};
using Law = std::map<std::string, Rule>;

Law ReadLaw() {
  Law law;
  std::ifstream file(fs::path(TEST_SOURCE_DIR) / "cmake/layers.txt");
  for (std::string line; std::getline(file, line);) {
    std::istringstream words(line);
    std::string folder;
    std::string word;
    if (!(words >> folder) || folder.front() == '#') continue;
    words >> word;  // the arrow
    auto* into = &law[folder].folders;
    while (words >> word) {
      if (word == "uses") {
        into = &law[folder].libraries;
      } else {
        into->insert(word);
      }
    }
  }
  return law;
}

bool IsInside(const std::string& path, const std::string& folder) {
  return path.rfind(folder + "/", 0) == 0;
}

// The most exact folder of the law that holds `path`; empty where there is none.
std::string FolderOf(const Law& law, const std::string& path) {
  std::string best;
  for (const auto& [folder, rule] : law) {
    if (IsInside(path, folder) && folder.size() > best.size()) best = folder;
  }
  return best;
}

// The library that an include in angle brackets belongs to; empty for the standard library and the
// system.
std::string LibraryOf(const std::string& include) {
  static const std::vector<std::pair<std::string, std::string>> prefixes = {
      {"assimp/", "assimp"},
      {"draco/", "draco"},
      {"meshoptimizer", "meshoptimizer"},
      {"zstd", "zstd"},
      {"xxhash", "xxhash"},
      {"utf8proc", "utf8proc"},
      {"seccomp", "seccomp"},
      {"zlib", "zlib"},
      {"tiff", "tiff"},
      {"png", "png"},
      {"jpeg", "jpeg"},
      {"jerror", "jpeg"},
      {"OpenEXR/", "openexr"},
      {"Imf", "openexr"},
      {"embree3/", "embree"},
      {"CLI/", "cli11"},
      {"nlohmann/", "json"},
      {"ft2build", "freetype"},
      {"fribidi", "fribidi"},
      {"gtest/", "gtest"},
      {"gmock/", "gtest"},
      {"rapidcheck", "rapidcheck"},
      {"benchmark/", "benchmark"},
      {"pybind11/", "pybind11"},
      {"Python.h", "pybind11"}};
  for (const auto& [prefix, library] : prefixes) {
    if (include.rfind(prefix, 0) == 0) return library;
  }
  const bool qt = include.size() > 1 && include[0] == 'Q' &&
                  std::isupper(static_cast<unsigned char>(include[1]));
  return qt ? "qt" : "";
}

std::vector<fs::path> CodeFiles() {
  std::vector<fs::path> files;
  for (const char* top : {"host", "engine", "source", "program", "tools", "tests", "bench"}) {
    const fs::path folder = fs::path(TEST_SOURCE_DIR) / top;
    if (!fs::exists(folder)) continue;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
      const std::string suffix = entry.path().extension();
      if (suffix == ".h" || suffix == ".cpp") files.push_back(entry.path());
    }
  }
  return files;
}

std::string Breach(const Law& law, const std::string& path, bool angle,
                   const std::string& include) {
  const std::string from = FolderOf(law, path);
  if (from.empty()) return path + " lies in a folder that the law does not name";
  const Rule& rule = law.at(from);
  if (angle) {
    const std::string library = LibraryOf(include);
    return library.empty() || rule.libraries.count(library) ? "" : path + " uses " + library;
  }
  const bool allowed = IsInside(include, from) ||
                       std::any_of(rule.folders.begin(), rule.folders.end(),
                                   [&](const auto& folder) { return IsInside(include, folder); });
  return allowed ? "" : path + " includes " + include;
}

TEST(Layers, EveryIncludeIsAllowed) {
  const Law law = ReadLaw();
  ASSERT_GE(law.size(), 10U);
  const std::regex pattern(R"(^\s*#\s*include\s*([<"])([^>"]+)[>"])", std::regex::multiline);
  std::size_t includes = 0;
  for (const fs::path& file : CodeFiles()) {
    const std::string path = fs::relative(file, TEST_SOURCE_DIR);
    const std::string text = ReadText(file);
    for (std::sregex_iterator it(text.begin(), text.end(), pattern), end; it != end;
         ++it, ++includes) {
      EXPECT_EQ(Breach(law, path, (*it)[1] == "<", (*it)[2]), "");
    }
  }
  EXPECT_GT(includes, 50U);
}

TEST(Layers, BreachesAreSeen) {
  const Law law = ReadLaw();
  EXPECT_NE(Breach(law, "source/Stagemarks/SM.cpp", false, "engine/core/Result.h"), "");
  EXPECT_NE(Breach(law, "engine/scene/X.cpp", false, "engine/undo/Steps.h"), "");
  EXPECT_NE(Breach(law, "engine/core/X.cpp", true, "QWidget"), "");
  EXPECT_EQ(Breach(law, "engine/undo/X.cpp", false, "engine/scene/TreeWalk.h"), "");
  EXPECT_EQ(Breach(law, "program/desktop/X.cpp", true, "QWidget"), "");
}

// Where two classes of one name come into one binary, each may be given the other's destructor.
TEST(Layers, EachNameOfAClassStandsInOneHeader) {
  std::map<std::string, std::string> headers;
  for (const fs::path& file : CodeFiles()) {
    const std::string path = fs::relative(file, TEST_SOURCE_DIR);
    if (file.extension() != ".h" || IsInside(path, "tests") || IsInside(path, "bench")) continue;
    std::string space;
    std::istringstream text(ReadText(file));
    for (std::string line; std::getline(text, line);) {
      std::istringstream words(line);
      std::string kind, name;
      words >> kind >> name;
      if (name == "[[nodiscard]]") words >> name;
      if (line.starts_with("namespace ")) space = name;
      const bool isClass = line.starts_with("class ") || line.starts_with("struct ");
      if (!isClass || line.find(';') != std::string::npos || name.find(':') != std::string::npos)
        continue;
      const auto [at, isNew] = headers.emplace(space + "::" + name, path);
      EXPECT_TRUE(isNew) << at->first << " of " << path << " is in " << at->second << ", too";
    }
  }
  EXPECT_GT(headers.size(), 300U);
}

TEST(Layers, HaveNoCycle) {
  const Law law = ReadLaw();
  const auto reaches = [&](auto&& self, const std::string& from, const std::string& to,
                           std::set<std::string>& seen) -> bool {
    for (const std::string& next : law.at(from).folders) {
      if (!law.count(next) || !seen.insert(next).second) continue;
      if (next == to || self(self, next, to, seen)) return true;
    }
    return false;
  };
  for (const auto& [folder, rule] : law) {
    if (folder == "tests") continue;  // tests may include each other's support
    std::set<std::string> seen;
    EXPECT_FALSE(reaches(reaches, folder, folder, seen)) << folder;
  }
}

// They have no parameter for the services. Everybody else is handed them.
TEST(Layers, OnlyPublishedFunctionsAskForTheServicesInUse) {
  for (const fs::path& file : CodeFiles()) {
    const std::string path = fs::relative(file, TEST_SOURCE_DIR);
    if (IsInside(path, "tests") || path.rfind("engine/outside/Services.", 0) == 0) continue;
    const std::string text = ReadText(file);
    const bool isPublished =
        IsInside(path, "engine") && text.find("\nnamespace host {") != std::string::npos;
    EXPECT_TRUE(isPublished || text.find("PublishedServices()") == std::string::npos) << path;
  }
}

TEST(Layers, FilesStayShort) {
  for (const fs::path& file : CodeFiles()) {
    const std::string text = ReadText(file);
    EXPECT_LE(std::count(text.begin(), text.end(), '\n'), 600) << file;
  }
}

}  // namespace
