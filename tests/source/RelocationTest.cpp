// How the folder of previews follows a scene that is saved under another name.
#include <filesystem>

#include "tests/source/StageTest.h"
#include "tests/support/ScratchFolder.h"

namespace stagemarks {
namespace {

namespace fs = std::filesystem;

class RelocationTest : public StageTest {
 protected:
  std::string Side(const std::string& file = "") const {
    return Folder() + "/shot_SM" + (file.empty() ? "" : "/" + file);
  }
  void Preview(const std::string& file) {
    fs::create_directory(Side());
    tests::WriteText(Side(file), "preview " + file);
  }
  void SetUp() override {
    SaveAs("shot.c4d");
    Preview("A.tif");
    Preview("B.tif");
    fs::create_directory(Side("deep"));
    Transcript();
  }
  const std::string question_ =
      "ask: A Stagemark directory with the same name already exists in that location.  Should I "
      "overwrite it? -> ";
};

TEST_F(RelocationTest, AnotherNameTakesThePlainFilesAlong) {
  SaveAs("next.c4d");
  EXPECT_EQ(Transcript(), "");
  EXPECT_EQ(tests::Names(Folder() + "/next_SM"), "A.tif B.tif");
  EXPECT_EQ(tests::Names(Side()), "A.tif B.tif deep");
  EXPECT_TRUE(fs::exists(Folder() + "/next.c4d"));
}

TEST_F(RelocationTest, TheSameFileCopiesNothing) {
  const std::size_t mark = Services().ledger.Mark();
  SaveAs("shot.c4d");
  EXPECT_EQ(Transcript(), "");
  EXPECT_EQ(Services().ledger.WrittenSince(mark), std::vector<std::string>{Folder() + "/shot.c4d"});
}

TEST_F(RelocationTest, AnExistingFolderIsAskedForAndFilesOfTheSameNameAreReplaced) {
  const std::string next = Folder() + "/next_SM/";
  fs::create_directory(next);
  for (const char* file : {"A.tif", "C.tif"}) tests::WriteText(next + file, "old");
  Answer(false);
  SaveAs("next.c4d");
  EXPECT_EQ(Transcript(), question_ + "no\n");
  EXPECT_EQ(tests::ReadText(next + "A.tif"), "old");
  SaveAs("shot.c4d");
  Transcript();
  Answer(true);
  SaveAs("next.c4d");
  EXPECT_EQ(Transcript(), question_ + "yes\n");
  EXPECT_EQ(tests::ReadText(next + "A.tif"), "preview A.tif");
  EXPECT_EQ(tests::ReadText(next + "C.tif"), "old");
  EXPECT_EQ(tests::ReadText(next + "B.tif"), "preview B.tif");
}

TEST_F(RelocationTest, AnotherSuffixInTheSameFolderLosesNothing) {
  Answer(true);
  SaveAs("shot.v");
  EXPECT_EQ(tests::Names(Side()), "A.tif B.tif deep");
  EXPECT_EQ(tests::ReadText(Side("A.tif")), "preview A.tif");
  EXPECT_TRUE(fs::exists(Folder() + "/shot.v"));
}

TEST_F(RelocationTest, AFolderThatCannotBeMadeIsToldAndDoesNotStopTheSave) {
  tests::WriteText(Folder() + "/next_SM", "a file");
  SaveAs("next.c4d");
  EXPECT_EQ(Transcript(), "tell: Error! New SM Directory could not be created!\n");
  EXPECT_EQ(tests::ReadText(Folder() + "/next_SM"), "a file");
  EXPECT_TRUE(fs::exists(Folder() + "/next.c4d"));
}

TEST_F(RelocationTest, AFailedCopyEndsTheCopyingAndNotTheSave) {
  Services().files.Break(1, tests::Fault::Fail, engine::Operation::CopyFile);
  SaveAs("next.c4d");
  EXPECT_EQ(Transcript(), "");
  EXPECT_EQ(tests::Names(Folder() + "/next_SM"), "");
  EXPECT_TRUE(fs::exists(Folder() + "/next.c4d"));
}

TEST_F(RelocationTest, ALinkedSideFolderIsReadThrough) {
  fs::rename(Side(), Folder() + "/real");
  fs::create_directory_symlink(Folder() + "/real", Side());
  SaveAs("next.c4d");
  EXPECT_EQ(tests::Names(Folder() + "/next_SM"), "A.tif B.tif");
  EXPECT_TRUE(fs::is_symlink(Side()));
}

TEST_F(RelocationTest, AFirstSaveAndASceneWithoutSideFolderCopyNothing) {
  SetActiveDocument(App().NewDocument());
  SaveAs("fresh.c4d");
  SaveAs("fresher.c4d");
  EXPECT_EQ(Transcript(), "");
  EXPECT_FALSE(fs::exists(Folder() + "/fresher_SM"));
}

}  // namespace
}  // namespace stagemarks
