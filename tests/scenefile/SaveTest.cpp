// Saving and opening through the door to the disk, and files of every released version.
#include <gtest/gtest.h>

#include "engine/outside/FaultyOutside.h"
#include "engine/outside/RealOutside.h"
#include "engine/scene/SceneDump.h"
#include "engine/scenefile/SceneFile.h"
#include "tests/scenefile/Scenes.h"
#include "tests/support/ScratchFolder.h"

namespace tests {
namespace {

class SceneFileOnDisk : public testing::Test {
 protected:
  ScratchFolder folder_;
  engine::RealOutside real_;
  engine::FaultyOutside faulty_{real_};
  engine::OutsideInUse inUse_{faulty_};
};

TEST_F(SceneFileOnDisk, OpeningSetsPathAndName) {
  const Document doc = EverythingScene();
  ASSERT_TRUE(engine::SaveSceneFile(*doc, folder_ / "scene.c4d"));
  const auto opened = engine::OpenSceneFile(folder_ / "scene.c4d");
  ASSERT_TRUE(opened) << opened.Message();
  const Document owned(opened.Value());
  EXPECT_EQ(engine::DumpDocument(*owned), engine::DumpDocument(*doc));
  EXPECT_EQ(owned->GetDocumentName().GetString().ToUtf8(), "scene.c4d");
  EXPECT_EQ(owned->GetDocumentPath().GetString().ToUtf8(), folder_.Path());
  EXPECT_FALSE(owned->GetChanged());
}

TEST_F(SceneFileOnDisk, AFailedSaveLeavesTheOldFileWhole) {
  WriteText(folder_ / "scene.c4d", "the old file");
  faulty_.Break(1, engine::Fault::Fail);
  EXPECT_FALSE(engine::SaveSceneFile(*EverythingScene(), folder_ / "scene.c4d"));
  EXPECT_EQ(ReadText(folder_ / "scene.c4d"), "the old file");
  EXPECT_EQ(Names(folder_.Path()), "scene.c4d");
}

TEST_F(SceneFileOnDisk, AFileThatIsReadByHalfIsRefusedWithItsPath) {
  ASSERT_TRUE(engine::SaveSceneFile(*EverythingScene(), folder_ / "scene.c4d"));
  faulty_.Break(1, engine::Fault::CutShort);
  const auto opened = engine::OpenSceneFile(folder_ / "scene.c4d");
  EXPECT_EQ(opened.Message().rfind("\"" + folder_ / "scene.c4d" + "\": The file is cut off", 0), 0u) << opened.Message();
}

// Never replace a golden scene: add one for each new version. The text beside it follows the dump.
TEST_F(SceneFileOnDisk, FilesOfVersion1Open) {
  const std::string golden = TEST_SOURCE_DIR "/tests/scenefile/golden/version1";
  const auto opened = engine::OpenSceneFile(golden + ".c4d");
  ASSERT_TRUE(opened) << opened.Message();
  EXPECT_EQ(engine::DumpDocument(*Document(opened.Value())), ReadText(golden + ".txt"));
}

}  // namespace
}  // namespace tests
