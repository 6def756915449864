// The installed tree, moved: that everything is there and that the programs find their parts in it.
#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "tests/package/Installed.h"
#include "tests/support/TextSearch.h"

namespace {

namespace fs = std::filesystem;
using tests::ChildResult;
using tests::Installed;
using tests::ReadText;

const std::string kParts = TEST_PARTS;
const std::string kSample = "share/stagemarks/scenes/dungeon/dungeon.gltf";

TEST_F(Installed, EveryPartLiesWhereOthersLookForIt) {
  std::vector<std::string> files{
      "bin/stagemarks",
      kParts + "/libstagemarks-engine.so",
      kParts + "/plugins/Stagemarks/Stagemarks.so",
      kParts + "/plugins/Stagemarks/res/icon.tif",
      kSample,
      "share/stagemarks/scenes/spider/spider.fbx",
      "share/mime/packages/stagemarks.xml",
      "share/icons/hicolor/scalable/apps/stagemarks.svg",
      "share/icons/hicolor/48x48/mimetypes/application-x-stagemarks-scene.png",
      "share/man/man1/stagemarks.1.gz",
      "share/bash-completion/completions/stagemarks",
      "share/doc/stagemarks/README.md",
      "share/doc/stagemarks/copyright",
      "share/doc/stagemarks/docs/SCENE_FILE.md",
  };
  if (tests::kHasDesktop) {
    files.insert(files.end(),
                 {"bin/stagemarks-desktop", "share/applications/stagemarks-desktop.desktop",
                  "share/man/man1/stagemarks-desktop.1.gz",
                  "share/metainfo/stagemarks-desktop.metainfo.xml"});
  }
  if (tests::kHasPython) {
    files.insert(files.end(), {"lib/python3/dist-packages/stagemarks/__init__.py",
                               "lib/python3/dist-packages/stagemarks/_stagemarks.pyi",
                               "lib/python3/dist-packages/stagemarks/py.typed",
                               kParts + "/stagemarks-interpreter.so"});
  }
  for (const std::string& file : files) EXPECT_TRUE(fs::is_regular_file(At(file))) << file;
  EXPECT_EQ(fs::exists(At("bin/stagemarks-desktop")), tests::kHasDesktop);
  // Pictures, and the manual where the toolkit to set it is there.
  EXPECT_EQ(tests::Names(At(kParts + "/plugins/Stagemarks")),
            tests::Names(TEST_PLUGIN_DIR "/Stagemarks"));
}

TEST_F(Installed, NothingRefersToTheBuild) {
  for (const auto& entry : fs::recursive_directory_iterator(At(""))) {
    EXPECT_FALSE(entry.is_symlink()) << entry.path();
    if (!entry.is_regular_file()) continue;
    const std::string path = entry.path().string();
    if (entry.path().extension() != ".so" && path.find("/bin/") == std::string::npos) continue;
    const ChildResult dynamic = tests::RunChild("/usr/bin/readelf", {"-d", path});
    ASSERT_EQ(dynamic.status, 0) << path;
    EXPECT_EQ(dynamic.out.find(TEST_BINARY_DIR), std::string::npos) << dynamic.out;
    EXPECT_NE(
        dynamic.out.find("$ORIGIN/..") == std::string::npos,
        path.find("engine") == std::string::npos && path.find("interpreter") == std::string::npos)
        << dynamic.out;
  }
}

TEST_F(Installed, TheCommandLineWorksWhereItWasMoved) {
  EXPECT_EQ(Run("stagemarks", {"--version"}).out, "stagemarks " TEST_VERSION "\n");
  const std::string scene = Home() + "/room.c4d";
  for (const std::vector<std::string>& call :
       std::vector<std::vector<std::string>>{{"import", At(kSample), scene},
                                             {"record", scene, "Day", "--write"},
                                             {"load", scene, "Day"}}) {
    const ChildResult result = Run("stagemarks", call);
    ASSERT_EQ(result.status, 0) << call.front() << ": " << result.err;
  }
  EXPECT_EQ(nlohmann::json::parse(
                Run("stagemarks", {"list", scene, "--json"}).out)["stagemarks"][0]["name"],
            "Day");
}

TEST_F(Installed, TheDesktopFindsItsPartsWhereItWasMoved) {
  if (!tests::kHasDesktop) GTEST_SKIP() << "built without the desktop";
  const std::string before = tests::Names(Home());
  const ChildResult result =
      Run("stagemarks-desktop", {"--check", At(kSample)}, {{"QT_QPA_PLATFORM", "offscreen"}});
  EXPECT_EQ(tests::Names(Home()), before) << "a check writes nothing";
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out.find("not there"), std::string::npos) << result.out;
  // The folder is found beside the engine's library, so this is also where that was loaded from.
  for (const std::string& line :
       {"plug-ins: " + At(kParts + "/plugins") + "\n  Stagemarks\n",
        "sample:   " + At(kSample) + "\n", "opened:   " + At(kSample) + ", objects: 85\n"}) {
    EXPECT_NE(result.out.find(line), std::string::npos) << line << result.out;
  }
}

TEST_F(Installed, TheDesktopSaysWhatIsMissing) {
  if (!tests::kHasDesktop) GTEST_SKIP() << "built without the desktop";
  const std::pair<std::string, std::string> offscreen("QT_QPA_PLATFORM", "offscreen");
  const std::string advice = "et DISPLAY, or use the command line: stagemarks --help.\n";
  const struct {
    std::vector<std::string> arguments;
    std::map<std::string, std::string> environment;
    int status;
    std::string says;
  } kCalls[] = {
      {{}, {}, 1, "stagemarks-desktop: No display was found. S" + advice},
      {{},
       {{"DISPLAY", ":7777"}},
       1,
       "stagemarks-desktop: The display \":7777\" could not be opened. S" + advice},
      {{}, {{"QT_QPA_PLATFORM", "hologram"}}, 1, "\"hologram\""},
      {{"--version"}, {}, 0, "stagemarks-desktop " TEST_VERSION "\n"},
      {{"--help"}, {}, 0, "--check"},
      {{"--chek"}, {offscreen}, 2, "stagemarks-desktop: Unknown option 'chek'.\n"},
      {{"--check", "/nowhere.c4d"}, {offscreen}, 1, "/nowhere.c4d"},
      {{"--check"},
       {offscreen, {"STAGEMARKS_PLUGINS", "/nowhere"}},
       1,
       "No plug-ins were found in \"/nowhere\"."},
  };
  for (const auto& call : kCalls) {
    const ChildResult result = Run("stagemarks-desktop", call.arguments, call.environment);
    EXPECT_EQ(result.status, call.status) << testing::PrintToString(call.arguments) << result.err;
    EXPECT_NE((result.out + result.err).find(call.says), std::string::npos)
        << result.out << result.err;
  }
}

// The package finds engine, plug-in and importer from where it lies itself.
TEST_F(Installed, PythonFindsItsPartsWhereItWasMoved) {
  if (!tests::kHasPython) GTEST_SKIP() << "built without Python";
  const ChildResult result = tests::RunBare(
      TEST_PYTHON,
      {"-c",
       "import stagemarks, sys\n"
       "with stagemarks.import_scene(sys.argv[1]) as doc:\n"
       "    doc.states.record('Day')\n"
       "    print(len(doc.objects), doc.states.names, stagemarks.__file__)\n"
       "    print(stagemarks._stagemarks.importer_path())",
       At(kSample)},
      Home(), {{"PYTHONPATH", At("lib/python3/dist-packages")}, {"PYTHONDONTWRITEBYTECODE", "1"}});
  EXPECT_EQ(result.out, "85 ['Day'] " + At("lib/python3/dist-packages/stagemarks/__init__.py") +
                            "\n" + At("bin/stagemarks") + "\n")
      << result.err;
}

// A file manager knows a scene by its first bytes.
TEST_F(Installed, TheFileTypeKnowsOurScenes) {
  const std::string xml = ReadText(At("share/mime/packages/stagemarks.xml"));
  const std::vector<std::string> names =
      tests::Matches(xml, "offset=\"0\" value=\"\\\\x8a([A-Z]+)\\\\r\\\\n\\\\x1a\\\\n\"");
  ASSERT_EQ(names.size(), 1U);
  const std::string scene = Home() + "/empty.c4d";
  ASSERT_EQ(Run("stagemarks", {"new", scene}).status, 0);
  EXPECT_EQ(ReadText(scene).substr(0, 8), "\x8a" + names[0] + "\r\n\x1a\n");
}

TEST_F(Installed, WhatOthersReadIsValid) {
  const struct {
    const char* program;
    std::vector<std::string> arguments;
  } kChecks[] = {
      {"desktop-file-validate", {"share/applications/stagemarks-desktop.desktop"}},
      {"appstreamcli", {"validate", "--no-net", "share/metainfo/stagemarks-desktop.metainfo.xml"}},
      {"update-mime-database", {"share/mime"}},
  };
  for (const auto& check : kChecks) {
    if (!tests::CanRun(check.program) || !fs::exists(At(check.arguments.back()))) continue;
    std::string call = "cd '" + At("") + "' && " + check.program;
    for (const std::string& argument : check.arguments) call += " " + argument;
    const ChildResult result = tests::RunChild("/bin/sh", {"-c", call});
    EXPECT_EQ(result.status, 0) << call << "\n" << result.out << result.err;
  }
}

}  // namespace
