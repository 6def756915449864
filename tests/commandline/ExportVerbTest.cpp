// Export from the shell: what is written, what is named when it could not be, and names that are no
// file names.
#include <filesystem>

#include "tests/commandline/CommandLine.h"

namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using tests::ChildResult;
using tests::CommandLine;

class ExportVerb : public CommandLine {
 protected:
  // Opens an exported scene and counts its textures that are not found.
  int MissingTextures(const std::string& scene) {
    int missing = 0;
    const json info = Json({"info", scene});
    for (const json& texture : info["textures"]) missing += texture["found"] ? 0 : 1;
    return missing;
  }

  // The counts and sizes reckoned beforehand are those written, but for the rounding to blocks.
  void ExpectReckoned(const json& result, const std::string& folder) {
    std::size_t textures = 0;
    std::uint64_t bytes = 0;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
      if (!entry.is_regular_file()) continue;
      textures += entry.path().parent_path().filename() == "tex";
      bytes += entry.file_size();
    }
    EXPECT_EQ(result["reckoned"]["scenes"], result["exported"].size());
    EXPECT_EQ(result["reckoned"]["textures"], textures);
    EXPECT_NEAR(result["reckoned"]["bytes"].get<double>(), static_cast<double>(bytes), 30000)
        << folder;
  }
};

TEST_F(ExportVerb, EachLayoutWritesItsFiles) {
  const std::string scene = Staged();
  const struct {
    const char* layout;
    const char* files;
  } kRows[] = {
      {"file", "spider Day.c4d | spider Night.c4d"},
      {"folders", "spider Day/spider Day.c4d | spider Night/spider Night.c4d"},
      {"project",
       "spider Day/spider Day.c4d | spider Day/tex/*4 | spider Night/spider Night.c4d | spider "
       "Night/tex/*4"},
      {"one-tex", "spider Day.c4d | spider Night.c4d | tex/*4"},
  };
  const std::string before = tests::ReadText(scene);
  for (const auto& row : kRows) {
    const json result =
        Json({"export", scene, "--layout", row.layout, "--to", folder_ / row.layout});
    EXPECT_EQ(Files(row.layout), row.files);
    EXPECT_EQ(result["exported"].size(), 2U);
    ExpectReckoned(result, folder_ / row.layout);
    EXPECT_EQ(MissingTextures(result["exported"][0]), 0) << row.layout;
    EXPECT_EQ(Json({"info", result["exported"][0], "--tree"})["objects"][0]["render"], 2)
        << row.layout;
    EXPECT_EQ(Json({"info", result["exported"][1], "--tree"})["objects"][0]["render"], 1)
        << row.layout;
  }
  EXPECT_EQ(tests::ReadText(scene), before);
}

TEST_F(ExportVerb, OnlyTheNamedOnesWithTheGivenFrames) {
  const std::string scene = Staged();
  const std::string out = Out({"export", scene, "--layout", "file", "--to", folder_ / "out",
                               "--frames", "7:90", "--only", "Night"});
  EXPECT_NE(out.find("Exported 1 scene file in"), std::string::npos) << out;
  EXPECT_EQ(Files("out"), "spider Night.c4d");
  const json settings = Json({"info", folder_ / "out/spider Night.c4d"})["renderSettings"];
  EXPECT_EQ(settings[0]["from"], 7);
  EXPECT_EQ(settings[0]["to"], 90);
  EXPECT_EQ(Call({"export", scene, "--to", folder_ / "out2", "--only", "Nigth"}).status, 2);
  EXPECT_FALSE(fs::exists(folder_ / "out2"));
}

TEST_F(ExportVerb, ATextureFoundNowhereIsNamed) {
  fs::copy(TEST_SOURCE_DIR "/scenes/spider", folder_ / "spider");
  const std::string scene = folder_ / "spider.c4d";
  Out({"import", folder_ / "spider/spider.obj", scene});
  Out({"record", scene, "Day", "--write"});
  fs::remove(folder_ / "spider/drkwood2.jpg");
  fs::create_directory(folder_ / "spider/drkwood2.jpg");
  const ChildResult result =
      Call({"export", scene, "--layout", "one-tex", "--to", folder_ / "out"});
  EXPECT_EQ(result.status, 1);
  EXPECT_NE(result.err.find("drkwood2.jpg\" was not found."), std::string::npos) << result.err;
  EXPECT_EQ(Files("out").substr(0, 16), "spider Day.c4d |");
  EXPECT_EQ(JsonAnyway({"export", scene, "--layout", "one-tex", "--to", folder_ / "out",
                        "--force"})["missingTextures"]
                .size(),
            1U);
  EXPECT_EQ(Call({"export", scene, "--layout", "file", "--to", folder_ / "flat"}).status, 0);
}

// A texture larger than the disk has room for stands for a small disk; only its size is there.
TEST_F(ExportVerb, ADiskTooSmallIsToldBeforeAnythingIsWritten) {
  fs::copy(TEST_SOURCE_DIR "/scenes/spider", folder_ / "spider");
  const std::string scene = folder_ / "spider.c4d";
  Out({"import", folder_ / "spider/spider.obj", scene});
  Out({"record", scene, "Day", "--write"});
  fs::resize_file(folder_ / "spider/drkwood2.jpg",
                  fs::space(folder_.Path()).available + (1U << 30));
  const std::vector<std::string> call{"export",  scene,  "--layout",
                                      "project", "--to", folder_ / "out"};
  const ChildResult result = Call(call);
  EXPECT_EQ(result.status, 1);
  EXPECT_NE(result.err.find("The export is 1 scene file and 5 textures, about "), std::string::npos)
      << result.err;
  EXPECT_NE(result.err.find("Export anyway? no (nobody can be asked here; --yes answers yes)"),
            std::string::npos)
      << result.err;
  EXPECT_EQ(result.out, "Nothing was exported.\n");
  EXPECT_FALSE(fs::exists(folder_ / "out"));
  EXPECT_EQ(CallOnTerminal(call, {{"[y/N]", "n\n"}}).status, 1);
  EXPECT_FALSE(fs::exists(folder_ / "out"));
  const json told = JsonAnyway(call);
  EXPECT_GT(told["reckoned"]["bytes"], told["reckoned"]["free"]);
  Out({"export", scene, "--layout", "file", "--to", folder_ / "flat"});
}

TEST_F(ExportVerb, OneNameThatIsNoFileNameStopsAllBeforeTheFirst) {
  const std::string scene = Staged();
  Out({"record", scene, "Late/Night", "--write"});
  for (const char* layout : {"file", "folders", "project", "one-tex"}) {
    const ChildResult result = Call({"export", scene, "--layout", layout, "--to", folder_ / "out"});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(
        result.err.find("The name \"Late/Night\" cannot be that of a file: it holds a slash."),
        std::string::npos)
        << result.err;
    EXPECT_FALSE(fs::exists(folder_ / "out")) << layout;
  }
  Out({"export", scene, "--to", folder_ / "out", "--only", "Day", "Night"});
}

TEST_F(ExportVerb, WhatCannotBeWrittenIsNamedAndLosesNothing) {
  const std::string scene = Staged();
  tests::WriteText(folder_ / "file", "a file");
  fs::create_directories(folder_ / "taken/spider Day.c4d");
  fs::create_directory(folder_ / "clash");
  tests::WriteText(folder_ / "clash/spider Day", "a file");
  tests::WriteText(folder_ / "clash/tex", "a file");
  const struct {
    const char* layout;
    std::string folder;
    const char* says;
  } kRows[] = {
      {"file", folder_ / "file", "Cannot make the folder"},
      {"file", folder_ / "no/such", "Cannot make the folder"},
      {"file", "/proc/self", "Cannot write \"/proc/self/spider Day.c4d\""},
      {"project", "/proc/self", "Cannot make the folder \"/proc/self/spider Day\""},
      {"one-tex", folder_ / "taken", "a folder is in its place"},
      {"folders", folder_ / "clash", "Cannot make the folder"},
      {"project", folder_ / "clash", "Cannot make the folder"},
      {"one-tex", folder_ / "clash", "clash/tex\""},
  };
  for (const auto& row : kRows) {
    const ChildResult result = Call({"export", scene, "--layout", row.layout, "--to", row.folder});
    EXPECT_EQ(result.status, 1) << row.layout << row.folder << result.out << result.err;
    EXPECT_NE(result.err.find(row.says), std::string::npos) << result.err;
  }
  EXPECT_EQ(tests::ReadText(folder_ / "file"), "a file");
  EXPECT_EQ(tests::ReadText(folder_ / "clash/spider Day"), "a file");
  EXPECT_EQ(tests::ReadText(folder_ / "clash/tex"), "a file");
  EXPECT_TRUE(fs::is_directory(folder_ / "taken/spider Day.c4d"));
}

TEST_F(ExportVerb, FilesOfTheSameNamesAreReplacedWhole) {
  const std::string scene = Staged();
  fs::create_directories(folder_ / "out/tex");
  tests::WriteText(folder_ / "out/spider Day.c4d", "old");
  tests::WriteText(folder_ / "out/tex/SpiderTex.jpg", "old");
  tests::WriteText(folder_ / "out/tex/mine.txt", "mine");
  EXPECT_EQ(Call({"export", scene, "--layout", "one-tex", "--to", folder_ / "out"}).status, 1);
  EXPECT_EQ(tests::ReadText(folder_ / "out/tex/SpiderTex.jpg"), "old")
      << "nothing is written where a scene is in the way";
  for (int i = 0; i < 2; ++i)
    Out({"export", scene, "--layout", "one-tex", "--to", folder_ / "out", "--force"});
  EXPECT_EQ(Files("out"), "spider Day.c4d | spider Night.c4d | tex/*5");
  EXPECT_EQ(tests::ReadText(folder_ / "out/tex/SpiderTex.jpg"),
            tests::ReadText(TEST_SOURCE_DIR "/scenes/spider/SpiderTex.jpg"));
  EXPECT_EQ(Marks(folder_ / "out/spider Day.c4d"), "*Day Night ");
}

// Whatever a name holds: files appear in the side folder and in the chosen folder only, and
// messages stay readable.
TEST_F(ExportVerb, NamesThatAreNoFileNamesStayInTheirFolders) {
  const std::string names[] = {"a/b",       "../up",    "../../up",     "/nowhere",
                               "...",       ".hidden",  "end ",         "a\\b",
                               "new\nline", "\x1b[31m", "\u05e9\u05dc", std::string(10000, 'x')};
  fs::create_directory(folder_ / "work");
  const std::string scene = folder_ / "work/shot.c4d";
  Out({"import", TEST_SOURCE_DIR "/scenes/spider/spider.fbx", scene});
  Out({"set", scene, "--size", "32x24", "--write"});
  for (const std::string& name : names) {
    const ChildResult recorded = Call({"record", scene, name, "--preview", "--write"});
    const ChildResult exported = Call(
        {"export", scene, "--only", name, "--layout", "project", "--to", folder_ / "work/out"});
    const ChildResult renamed = Call({"rename", scene, name, name + "2", "--write"});
    for (const ChildResult& result : {recorded, exported, renamed}) {
      EXPECT_LT(result.status, 3) << name.substr(0, 20) << result.err;
      EXPECT_LT(result.out.size() + result.err.size(), 5000U) << name.substr(0, 20);
      EXPECT_EQ((result.out + result.err).find('\x1b'), std::string::npos);
    }
    std::error_code tooLong;
    EXPECT_EQ(exported.status == 0,
              fs::exists(folder_ / ("work/out/shot " + name + "/shot " + name + ".c4d"), tooLong))
        << name.substr(0, 20);
  }
  EXPECT_EQ(Json({"list", scene})["stagemarks"].size(), std::size(names));
  EXPECT_EQ(tests::Names(folder_ / "work"), "out shot.c4d shot_SM");
  EXPECT_EQ(tests::Names(folder_.Path()), "work");
}

TEST_F(ExportVerb, NamesThatBeginWithADashCanBeGiven) {
  const std::string scene = Spider();
  Out({"record", scene, "--write", "--", "-x"});
  EXPECT_EQ(Marks(scene), "*-x ");
  Out({"export", scene, "--only=-x", "--layout", "file", "--to", folder_ / "out"});
  EXPECT_EQ(Files("out"), "spider -x.c4d");
}

TEST_F(ExportVerb, ProgressIsShownOnATerminal) {
  const std::string scene = Staged();
  const ChildResult result =
      CallOnTerminal({"export", scene, "--layout", "file", "--to", folder_ / "out"}, {});
  EXPECT_EQ(result.status, 0);
  EXPECT_NE(result.out.find("Writing spider Day.c4d 50 %"), std::string::npos) << result.out;
}

}  // namespace
