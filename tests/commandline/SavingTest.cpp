// Rules for replacing files: scenes that several programs change at once, results in place of other
// files, and what a refusal leaves.
#include <filesystem>

#include "engine/outside/FileLock.h"
#include "tests/commandline/CommandLine.h"

namespace {

namespace fs = std::filesystem;
using tests::ChildResult;
using tests::CommandLine;
using tests::ReadText;

class Saving : public CommandLine {
 protected:
  std::string Here() const { return tests::Names(folder_.Path()); }
};

TEST_F(Saving, ManyWritersLoseNothing) {
  Out({"new", Scene("w.c4d")});
  fs::create_symlink("w.c4d", Scene("link.c4d"));
  const ChildResult result = Shell(
      "for i in 1 2 3 4 5 6 7 8; do stagemarks record w.c4d S$i --wait 3600 --write & done; "
      "stagemarks record link.c4d Linked --wait 3600 --write; wait");
  EXPECT_EQ(Out({"list", Scene("w.c4d"), "--names"}), "Linked\nS1\nS2\nS3\nS4\nS5\nS6\nS7\nS8\n")
      << result.err;
  EXPECT_EQ(Here(), "link.c4d w.c4d");
}

TEST_F(Saving, AWriterWaitsSaysSoAndGivesUp) {
  const std::string scene = Scene("w.c4d");
  Out({"new", scene});
  const auto lock = engine::FileLock::Try(scene);
  const ChildResult busy = Call({"record", scene, "A", "--write", "--wait", "0"});
  EXPECT_EQ(busy.status, 1);
  EXPECT_NE(busy.err.find("Another program is changing \"" + scene + "\", still after 0 seconds."),
            std::string::npos)
      << busy.err;
  EXPECT_EQ(Call({"list", scene}).status, 0) << "reading needs no lock";
  const ChildResult stopped =
      CallOnTerminal({"record", scene, "A", "--write"}, {{"waiting at most 60 seconds", "\x03"}});
  EXPECT_EQ(stopped.status, 130) << stopped.out;
  EXPECT_EQ(Out({"list", scene, "--names"}), "");
}

// Each call is made where the file is something else's, then with --force.
TEST_F(Saving, OnlyWhatACommandMadeItselfIsReplacedWithoutForce) {
  const std::string scene = Staged();
  const std::string out = Scene("out.c4d");
  const std::string spider = TEST_SOURCE_DIR "/scenes/spider/spider.fbx";
  const struct {
    std::vector<std::string> call;
    std::string file;
    bool again;  // whether the same call replaces what it wrote
  } kRows[] = {
      {{"import", spider, out}, out, true},
      {{"new", out}, out, true},
      {{"set", Scene("bare.c4d"), "--add-layer", "L", "-o", out}, out, true},
      {{"record", scene, "Dusk", "-o", out}, out, false},
      {{"load", scene, "Day", "-o", out}, out, false},
      {{"render", scene, "--state", "Day", "--size", "8x6", "-o", Scene("p.png")},
       Scene("p.png"),
       true},
      {{"render", scene, "--state", "Day", "--size", "8x6", "-o", Scene("p.tif")},
       Scene("p.tif"),
       true},
      {{"sheet", scene, "--state", "Day", "-o", Scene("p.png")}, Scene("p.png"), true},
      {{"sheet", scene, "--state", "Day", "--html", Scene("page")},
       Scene("page/pictures/Day.png"),
       true},
      {{"sheet", scene, "--state", "Day", "--html", Scene("page")}, Scene("page/index.html"), true},
      {{"export", scene, "--only", "Day", "--layout", "file", "--to", Scene("ex")},
       Scene("ex/spider Day.c4d"),
       false},
      {{"publish", scene, "--only", "Day", "--to", Scene("pub")},
       Scene("pub/spider Day.glb"),
       true},
      {{"publish", scene, "--only", "Day", "--to", Scene("pub"), "--as", "gltf"},
       Scene("pub/spider Day.gltf"),
       true},
      {{"page", scene, "--only", "Day", "--to", Scene("web")}, Scene("web/index.html"), true},
  };
  Out({"import", spider, Scene("bare.c4d")});
  for (const auto& row : kRows) {
    if (row.call[0] == "page" && !fs::exists(TEST_BINARY_DIR "/share/stagemarks/page")) continue;
    for (const std::string& made : {Scene("p.png"), Scene("p.tif"), Scene("page"), Scene("ex"),
                                    Scene("pub"), Scene("web"), out})
      fs::remove_all(made);
    fs::create_directories(fs::path(row.file).parent_path());
    const std::string what = testing::PrintToString(row.call) + row.file;
    auto forced = row.call;
    forced.emplace_back("--force");
    Out(row.call);
    EXPECT_EQ(Call(row.call).status, row.again ? 0 : 1) << what;
    for (const std::string& content : {std::string("somebody's work"), ReadText(row.file) + "x"}) {
      tests::WriteText(row.file, content);
      const ChildResult refused = Call(row.call);
      EXPECT_EQ(refused.status, 1) << what << refused.err;
      EXPECT_NE(refused.err.find("--force"), std::string::npos) << what << refused.err;
      EXPECT_EQ(ReadText(row.file), content) << what;
    }
    Out(forced);
    EXPECT_NE(ReadText(row.file), "somebody's work") << what;
  }
}

TEST_F(Saving, AResultThatWasWorkedOnIsNoLongerTheCommands) {
  const std::string scene = Spider();
  Out({"set", scene, "--add-layer", "Mine", "--write"});
  EXPECT_EQ(Call({"import", TEST_SOURCE_DIR "/scenes/spider/spider.fbx", scene}).status, 1);
  Out({"import", TEST_SOURCE_DIR "/scenes/spider/spider.fbx", scene, "--force"});
  Out({"record", scene, "Day", "--write"});
  EXPECT_EQ(Call({"import", TEST_SOURCE_DIR "/scenes/spider/spider.fbx", scene}).status, 1);
  EXPECT_EQ(Marks(scene), "*Day ");
}

TEST_F(Saving, ARefusedSaveLeavesNothing) {
  const std::string scene = Staged();
  Out({"record", scene, "Day", "--preview", "--yes", "--write"});
  Out({"rename", scene, "Day", "Dawn", "-o", Scene("out.c4d")});
  const std::string before = ReadText(Scene("out.c4d"));
  EXPECT_EQ(Call({"rename", scene, "Day", "Noon", "-o", Scene("out.c4d")}).status, 1);
  EXPECT_EQ(ReadText(Scene("out.c4d")), before);
  fs::remove(Scene("out.c4d"));
  const ChildResult left = Call({"rename", scene, "Day", "Noon", "-o", Scene("out.c4d")});
  EXPECT_EQ(left.status, 1);
  EXPECT_NE(left.err.find("Nothing was written"), std::string::npos) << left.err;
  EXPECT_FALSE(fs::exists(Scene("out.c4d"))) << "the previews of another scene are in the way";
  Out({"rename", scene, "Day", "Noon", "-o", Scene("out.c4d"), "--force"});
  EXPECT_EQ(tests::Names(Scene("out_SM")), "Dawn.tif Noon.tif");
  Out({"rename", scene, "Day", "Noon", "-o", Scene("out.c4d"), "--force"});
  EXPECT_EQ(tests::Names(Scene("out_SM")), "Dawn.tif Noon.tif")
      << "the picture of the first time gives way";

  const ChildResult refused = Shell(
      "mkfifo pipe; for place in pipe - a.gltf; do "
      "stagemarks record spider.c4d New -o $place && echo written to $place; done; rm pipe");
  EXPECT_EQ(refused.out, "");
  const ChildResult full = Shell("ulimit -f 1; stagemarks load spider.c4d Night -o full.c4d");
  EXPECT_EQ(full.status, 1) << full.err;
  EXPECT_EQ(Here(), "out.c4d out_SM spider.c4d spider_SM");
}

TEST_F(Saving, TheSheetAndThePageShareAFolder) {
  const std::string scene = Staged();
  Out({"sheet", scene, "-o", Scene("page/Day.png"), "--html", Scene("page")});
  EXPECT_EQ(Files("page"), "Day.png | index.html | pictures/Day.png | pictures/Night.png");
  EXPECT_NE(ReadText(Scene("page/index.html")).find("pictures/Day.png"), std::string::npos);
  EXPECT_EQ(Call({"sheet", scene, "-o", Scene("page/pictures/Night.png")}).status, 1)
      << "a picture of the page is no sheet";
}

}  // namespace
