// The commands of the README and of CONTRIBUTING are run or stand for something there is; the
// README's table is complete.
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include "tests/commandline/CommandLine.h"
#include "tests/support/TextSearch.h"

namespace tests {
namespace {

namespace fs = std::filesystem;

// The lines of both that are commands of this kind, as a person would paste them.
std::vector<std::string> Commands(const std::string& begin) {
  std::vector<std::string> commands;
  for (const char* document : {"/README.md", "/CONTRIBUTING.md"}) {
    std::istringstream lines(ReadText(TEST_SOURCE_DIR + std::string(document)));
    for (std::string line; std::getline(lines, line);) {
      if (line.rfind("    " + begin, 0) == 0) commands.push_back(line.substr(4));
    }
  }
  return commands;
}

class Readme : public CommandLine {
 protected:
  // Runs a line in a shell where `path` is searched for programs first, and where nobody looks at a
  // window.
  ChildResult Paste(const std::string& folder, const std::string& path,
                    const std::string& line) const {
    const std::string command = "cd '" + folder + "' && PATH='" + path + "':$PATH && " + line;
    return RunChild("/bin/sh", {"-c", command},
                    {{"XDG_CONFIG_HOME", folder_ / "config"},
                     {"STAGEMARKS_BUILD", TEST_BINARY_DIR},
                     {"STAGEMARKS_SAID", folder_ / "said"},
                     {"CI", "true"}});
  }
  // Puts programs of these names into a folder that only note how they were called.
  std::string Notetakers(const std::string& folder, const std::vector<std::string>& names) const {
    fs::create_directories(folder);
    for (const std::string& name : names) {
      const fs::path file = fs::path(folder) / name;
      std::ofstream(file) << "#!/bin/sh\necho \"$(basename \"$0\") $*\" >>\"$STAGEMARKS_SAID\"\n";
      fs::permissions(file, fs::perms::owner_all);
    }
    return folder;
  }
};

TEST_F(Readme, CommandsDoWhatTheySay) {
  fs::create_directory_symlink(TEST_SOURCE_DIR "/scenes", folder_ / "scenes");
  const std::vector<std::string> commands = Commands("stagemarks ");
  const bool hasViewer = fs::exists(TEST_BINARY_DIR "/share/stagemarks/page/page.html");
  for (const std::string& line : commands) {
    if (!hasViewer && line.starts_with("stagemarks page ")) continue;  // the test of pages says so
    const ChildResult result = Paste(folder_.Path(), TEST_BINARY_DIR "/bin", line);
    EXPECT_EQ(result.status, 0) << line << "\n" << result.out << result.err;
  }
  EXPECT_GT(commands.size(), 15U);
  EXPECT_EQ(Marks(folder_ / "spider.c4d"), "*All ");
  EXPECT_EQ(Files("standalone"),
            "spider All/spider All.c4d | spider All/tex/*4 | spider Head only/spider Head only.c4d "
            "| spider Head only/tex/*4");
}

// The manual's commands, with a scene that is there in the place of the one it speaks of.
TEST_F(Readme, CommandsOfTheManualDoWhatTheySay) {
  fs::create_directory_symlink(TEST_SOURCE_DIR "/scenes", folder_ / "scenes");
  std::istringstream manual(ReadText(TEST_SOURCE_DIR "/help/manual.md"));
  std::size_t commands = 0;
  for (std::string line; std::getline(manual, line);) {
    if (line.rfind("stagemarks ", 0) != 0) continue;
    ++commands;
    const std::string there = WithReplaced(line, "shop.gltf", "scenes/spider/spider.fbx");
    const ChildResult result = Paste(folder_.Path(), TEST_BINARY_DIR "/bin", there);
    EXPECT_EQ(result.status, 0) << there << "\n" << result.out << result.err;
  }
  EXPECT_GE(commands, 7U);
  EXPECT_EQ(Marks(folder_ / "dark.c4d"), "*Lights out ");
  EXPECT_EQ(Files("out"), "shop Lights out/shop Lights out.c4d | shop Lights out/tex/*4");
}

// The scripts are run in a folder of their own, with tools that only note what they are asked to
// do: the real ones take minutes.
TEST_F(Readme, ScriptsRun) {
  for (const char* name : {"run", "test"})
    fs::copy(std::string(TEST_SOURCE_DIR "/") + name, folder_ / name);
  for (const char* folder : {"cmake", "scenes"})
    fs::copy(std::string(TEST_SOURCE_DIR "/") + folder, folder_ / folder,
             fs::copy_options::recursive);
  const std::string tools =
      Notetakers(folder_ / "tools", {"cmake", "ninja", "ctest", "git", "clang-format", "clang-tidy",
                                     "clang++", "setarch", "dpkg-query"});
  std::ofstream(fs::path(tools) / "dpkg-query") << "#!/bin/sh\necho install ok installed\n";
  Notetakers(folder_ / "desktop/bin", {"stagemarks-desktop"});
  Notetakers(folder_ / "build/threads/bin", {"test_threads"});
  Notetakers(folder_ / "build/sanitized/bin", {"SceneFileFuzz", "ImageFuzz", "StoreFuzz",
                                               "StateTextFuzz", "PreferencesFuzz", "FramesFuzz"});
  fs::create_directories(folder_ / "build/UnifiedSource");
  std::ofstream(folder_ / "build/UnifiedSource/compile_commands.json")
      << "  \"file\": \"" << folder_.Path() << "/engine/some.cpp\"\n";
  std::vector<std::string> commands = Commands("./");
  EXPECT_EQ(commands.size(), 10U);
  for (const std::string& line : commands) {
    const bool opensWindow = line.rfind("./run --desktop", 0) == 0;
    const ChildResult result =
        Paste(folder_.Path(), tools, (opensWindow ? "STAGEMARKS_BUILD=desktop " : "") + line);
    EXPECT_EQ(result.status, 0) << line << "\n" << result.out << result.err;
    EXPECT_TRUE(fs::exists(folder_ / "stagemarks-demo/sheet.png"))
        << "./run comes first and does the main job";
  }
  const std::string said = ReadText(folder_ / "said");
  for (const char* call :
       {"ninja -C " TEST_BINARY_DIR " ", "ctest --test-dir " TEST_BINARY_DIR,
        "-DSTAGEMARKS_SANITIZE=address,undefined", "ctest --test-dir build/sanitized",
        "-DCMAKE_CXX_COMPILER=clang++",
        "StoreFuzz -seed=1 -runs=", "FramesFuzz -seed=1 -runs=", "-DSTAGEMARKS_SANITIZE=thread",
        "git ls-files", "UnifiedSource --checks=-bugprone-suspicious-include",
        "stagemarks-desktop desktop/sample/teapot.c4d\n"}) {
    EXPECT_NE(said.find(call), std::string::npos) << call << "\n" << said;
  }
}

TEST_F(Readme, PresetsExist) {
  const nlohmann::json presets =
      nlohmann::json::parse(ReadText(TEST_SOURCE_DIR "/CMakePresets.json"));
  std::set<std::string> known;
  for (const auto& preset : presets["configurePresets"])
    known.insert(preset["name"].get<std::string>());
  for (const std::string& line : Commands("cmake --preset ")) {
    std::istringstream words(line.substr(15));
    std::string name;
    words >> name;
    EXPECT_TRUE(known.count(name)) << line;
    EXPECT_NE(line.find("build/" + name), std::string::npos) << line;
  }
}

// Every verb stands in the table of commands, and nothing else does.
TEST_F(Readme, TableNamesEveryVerb) {
  std::set<std::string> named;
  std::istringstream readme(ReadText(TEST_SOURCE_DIR "/README.md"));
  for (std::string line; std::getline(readme, line);) {
    if (line.rfind("| `", 0) != 0 || line.find('/') < line.find('|', 2)) continue;
    const std::string cell = line.substr(0, line.find('|', 2));
    for (const std::string& name : Matches(cell, "`([a-z-]+)`")) named.insert(name);
  }
  const std::string help = Out({"--help"});
  const std::vector<std::string> verbs =
      Matches(help.substr(help.find("Scenes:")), "\n  ([a-z][a-z-]+) +[A-Z]");
  const std::set<std::string> known(verbs.begin(), verbs.end());
  EXPECT_GT(known.size(), 15U);
  EXPECT_EQ(named, known);
}

}  // namespace
}  // namespace tests
