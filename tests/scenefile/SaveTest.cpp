// Saving and opening to the disk, and files of every released version.
#include <gtest/gtest.h>

#include "engine/scene/SceneDump.h"
#include "engine/scenefile/SceneFile.h"
#include "tests/scenefile/Scenes.h"
#include "tests/support/SceneBuilder.h"
#include "tests/support/ScratchFolder.h"
#include "tests/support/ScriptedServices.h"

namespace tests {
namespace {

class SceneFileOnDisk : public testing::Test {
 protected:
  ScratchFolder folder_;
  ScriptedServices services_;
};

TEST_F(SceneFileOnDisk, OpeningSetsPathAndName) {
  const Document doc = EverythingScene();
  ASSERT_TRUE(engine::SaveSceneFile(services_.Get(), *doc, folder_ / "scene.c4d"));
  auto read = engine::OpenSceneFile(services_.Get(), folder_ / "scene.c4d");
  ASSERT_TRUE(read) << read.Message();
  const Document opened = read.Take();
  EXPECT_EQ(engine::DumpDocument(*opened), engine::DumpDocument(*doc));
  EXPECT_EQ(opened->GetDocumentName().GetString().ToUtf8(), "scene.c4d");
  EXPECT_EQ(opened->GetDocumentPath().GetString().ToUtf8(), folder_.Path());
  EXPECT_FALSE(opened->GetChanged());
}

// Files beside or below the scene move with it; the document that was saved keeps its names.
TEST_F(SceneFileOnDisk, FilesBesideTheSceneMoveWithIt) {
  SceneBuilder scene;
  scene.Material("M").Object("O").Settings("R").Post("R", host::VPglobalillumination);
  const std::string names[] = {folder_ / "a/wood.png",  folder_ / "a/tex/deep/wood.png",
                               folder_ / "ab/wood.png", "wood.png",
                               "tex/wood.png",          folder_ / "a/../wood.png",
                               folder_ / "a",           "C:\\wood.png"};
  for (const std::string& name : names) scene.Bitmap(scene.GetMaterial("M"), name);
  host::BaseShader* parent = scene.Bitmap(scene.GetObject("O"), "");
  scene.Bitmap(scene.GetObject("O"), folder_ / "a/below.png", parent);
  host::BaseVideoPost& post = *scene.GetSettings("R")->GetFirstVideoPost();
  post.GetDataInstance()->SetFilename(host::GI_CACHE_FILENAME,
                                      host::Filename((folder_ / "a/illum/own.gi").c_str()));
  // A plug-in's own, of which nobody knows what it means.
  scene.GetObject("O")->GetDataInstance()->SetFilename(1, host::Filename(names[0].c_str()));
  const std::string before = engine::DumpDocument(scene.Doc());
  for (const char* folder : {"a", "ab"}) ASSERT_TRUE(services_.files.MakeFolder(folder_ / folder));
  ASSERT_TRUE(engine::SaveSceneFile(services_.Get(), scene.Doc(), folder_ / "a/scene.c4d"));
  EXPECT_EQ(engine::DumpDocument(scene.Doc()), before);
  EXPECT_EQ(engine::DumpDocument(
                *engine::OpenSceneFile(services_.Get(), folder_ / "a/scene.c4d").Value()),
            before);
  ASSERT_TRUE(services_.files.Rename(folder_ / "a", folder_ / "b"));
  const Document moved = engine::OpenSceneFile(services_.Get(), folder_ / "b/scene.c4d").Take();
  EXPECT_FALSE(moved->GetChanged());
  std::vector<std::string> found;
  const host::BaseContainer all = moved->GetAllTextures(nullptr);
  for (host::LONG i = 0; i < all.GetCount(); ++i)
    found.push_back(all.GetIndexData(i).GetFilename().GetString().ToUtf8());
  EXPECT_EQ(found, (std::vector<std::string>{
                       folder_ / "b/wood.png", folder_ / "b/tex/deep/wood.png", names[2], names[3],
                       names[4], names[5], names[6], names[7], folder_ / "b/below.png"}));
  EXPECT_EQ(moved->GetFirstObject()->GetData().GetFilename(1).GetString().ToUtf8(), names[0]);
  const host::RenderData* settings = moved->GetFirstRenderData();
  while (!settings->GetFirstVideoPost()) settings = settings->GetNext();
  EXPECT_EQ(settings->GetFirstVideoPost()
                ->GetData()
                .GetFilename(host::GI_CACHE_FILENAME)
                .GetString()
                .ToUtf8(),
            folder_ / "b/illum/own.gi");
}

TEST_F(SceneFileOnDisk, AFailedSaveLeavesTheOldFileWhole) {
  WriteText(folder_ / "scene.c4d", "the old file");
  services_.files.Break(1, Fault::Fail);
  EXPECT_FALSE(engine::SaveSceneFile(services_.Get(), *EverythingScene(), folder_ / "scene.c4d"));
  EXPECT_EQ(ReadText(folder_ / "scene.c4d"), "the old file");
  EXPECT_EQ(Names(folder_.Path()), "scene.c4d");
}

TEST_F(SceneFileOnDisk, AFileThatIsReadByHalfIsRefusedWithItsPath) {
  ASSERT_TRUE(engine::SaveSceneFile(services_.Get(), *EverythingScene(), folder_ / "scene.c4d"));
  services_.files.Break(1, Fault::CutShort);
  const auto opened = engine::OpenSceneFile(services_.Get(), folder_ / "scene.c4d");
  EXPECT_EQ(opened.Message().rfind("\"" + folder_ / "scene.c4d" + "\": The file is cut off", 0), 0u)
      << opened.Message();
}

// Never replace a golden scene: add one for each new version. The text beside it follows the dump.
TEST_F(SceneFileOnDisk, FilesOfVersion1Open) {
  const std::string golden = TEST_SOURCE_DIR "/tests/scenefile/golden/version1";
  const auto opened = engine::OpenSceneFile(services_.Get(), golden + ".c4d");
  ASSERT_TRUE(opened) << opened.Message();
  EXPECT_EQ(engine::DumpDocument(*opened.Value()), ReadText(golden + ".txt"));
}

}  // namespace
}  // namespace tests
