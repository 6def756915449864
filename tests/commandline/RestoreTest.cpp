// The version of a scene before its last saving, and what may be lost on the way to a new one.
#include <filesystem>

#include "tests/commandline/CommandLine.h"

namespace {

namespace fs = std::filesystem;
using tests::ChildResult;
using tests::CommandLine;
using tests::ReadText;

class Restoring : public CommandLine {
 protected:
  std::string Kept() const {
    const std::string folder = settings_ / "state/stagemarks/previous";
    return fs::exists(folder) ? tests::Names(folder) : "";
  }
};

TEST_F(Restoring, TheVersionBeforeChangesPlacesWithTheOneNow) {
  const std::string scene = Scene("s.c4d");
  Out({"new", scene});
  EXPECT_EQ(Kept(), "") << "nothing was replaced";
  const ChildResult none = Call({"restore", scene});
  EXPECT_EQ(none.status, 1);
  EXPECT_NE(none.err.find("No version"), std::string::npos) << none.err;
  Out({"record", scene, "A", "--write"});
  const std::string one = ReadText(scene);
  Out({"record", scene, "B", "--write"});
  const std::string two = ReadText(scene);
  EXPECT_TRUE(Kept().starts_with("s-") && Kept().ends_with(".c4d")) << Kept();
  EXPECT_EQ(Json({"restore", scene, "--dry-run"})["restored"], nullptr);
  EXPECT_EQ(ReadText(scene), two);
  EXPECT_EQ(Json({"restore", scene})["restored"], scene);
  EXPECT_EQ(ReadText(scene), one);
  Out({"restore", scene});
  EXPECT_EQ(ReadText(scene), two);
  fs::remove(scene);
  Out({"restore", scene});
  EXPECT_EQ(ReadText(scene), one) << "also where the scene was deleted";
  // Exports and copies are no savings of the scene.
  Out({"export", scene, "--to", Scene("ex"), "--layout", "file"});
  EXPECT_EQ(std::ranges::count(Kept(), ' '), 0) << Kept();
}

TEST_F(Restoring, ThePersonChoosesWhereVersionsAreKept) {
  const std::string scene = Scene("s.c4d");
  Out({"new", scene});
  fs::create_symlink(scene, Scene("link.c4d"));
  EXPECT_EQ(Call({"restore"}).status, 2);
  EXPECT_EQ(Call({"restore", "--keep", "under"}).status, 2);
  Out({"restore", "--keep", "beside"});
  Out({"record", Scene("link.c4d"), "A", "--write"});
  EXPECT_EQ(tests::Names(folder_.Path()), "link.c4d s.c4d s.c4d~");
  Out({"restore", "--keep", "nowhere"});
  const std::string kept = ReadText(Scene("s.c4d~"));
  Out({"record", scene, "B", "--write"});
  EXPECT_EQ(ReadText(Scene("s.c4d~")), kept);
  EXPECT_EQ(Kept(), "");
  const std::string now = ReadText(scene);
  tests::WriteText(Scene("s.c4d~"), kept.substr(0, kept.size() / 2));
  const ChildResult damaged = Call({"restore", scene});
  EXPECT_EQ(damaged.status, 1);
  EXPECT_NE(damaged.err.find("damaged"), std::string::npos) << damaged.err;
  EXPECT_EQ(ReadText(scene), now);
}

TEST_F(Restoring, WhatCannotBeKeptIsNotedAndTheSceneIsSaved) {
  const std::string scene = Scene("s.c4d");
  Out({"new", scene});
  tests::WriteText(settings_ / "state", "no folder");
  const ChildResult saved = Call({"record", scene, "A", "--write"});
  EXPECT_EQ(saved.status, 0);
  EXPECT_NE(saved.err.find("The version before was not kept."), std::string::npos) << saved.err;
  EXPECT_EQ(Marks(scene), "*A ");
}

// A picture that cannot be written is no reason to lose the old one.
TEST_F(Restoring, TheOldPreviewStaysUntilTheNewOneIsThere) {
  const std::string scene = Scene("s.c4d");
  Out({"new", scene});
  Out({"record", scene, "A", "--preview", "--write"});
  const std::string old = ReadText(Scene("s_SM/A.tif"));
  ASSERT_GT(old.size(), 8192U);
  const ChildResult full = Shell("ulimit -f 16; stagemarks record s.c4d A --preview --yes --write");
  EXPECT_EQ(full.status, 1) << full.err;
  EXPECT_EQ(ReadText(Scene("s_SM/A.tif")), old);
  Out({"record", scene, "A", "--yes", "--write"});
  EXPECT_FALSE(fs::exists(Scene("s_SM/A.tif"))) << "without a new one the old one is not of A";
}

TEST_F(Restoring, DefaultsThatWereNotSavedAreSaidToBe) {
  const std::string scene = Scene("s.c4d");
  Out({"new", scene});
  EXPECT_NE(Out({"options", scene, "--save-default"}).find("Saved as the defaults"),
            std::string::npos);
  for (const std::string& obstacle :
       {std::string("stagemarks preferences 99 0\n{}\n"), std::string()}) {
    const std::string file = settings_ / "config/stagemarks/preferences";
    fs::remove_all(settings_ / "config");
    if (obstacle.empty()) {
      tests::WriteText(settings_ / "config", "no folder");
    } else {
      fs::create_directories(settings_ / "config/stagemarks");
      tests::WriteText(file, obstacle);
    }
    const ChildResult failed = Call({"options", scene, "--save-default"});
    EXPECT_EQ(failed.status, 1) << obstacle << failed.out;
    EXPECT_EQ(failed.out.find("Saved"), std::string::npos) << failed.out;
    EXPECT_NE(failed.err.find("were not saved"), std::string::npos) << failed.err;
  }
}

}  // namespace
