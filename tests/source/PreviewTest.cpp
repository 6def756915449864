// Rendering a preview: the render settings come back as they were, whatever becomes of the picture.
#include <filesystem>

#include "tests/source/StageTest.h"
#include "tests/support/ScratchFolder.h"

namespace stagemarks {
namespace {

namespace fs = std::filesystem;

class PreviewTest : public StageTest {
 protected:
  void SetUp() override {
    PretendSaved("shot.c4d");
    Tick(kGeneratePreview, true);
    Transcript();
  }
  BaseContainer& Settings() { return *Doc().GetActiveRenderData()->GetDataInstance(); }
  std::string File(const std::string& name) const { return Folder() + "/shot_SM/" + name + ".tif"; }
};

TEST_F(PreviewTest, SettingsKeepTheirValuesTheirOrderAndWhatTheyLack) {
  for (const LONG missing : {RDATA_FRAMETO, RDATA_FRAMESEQUENCE, 5202}) Settings().RemoveData(missing);
  Settings().SetLong(5300, 7);
  Settings().SetBool(5076, TRUE);
  const BaseContainer before = Settings();
  Record("A");
  EXPECT_EQ(support::ContainerLines(Settings(), &Doc()), support::ContainerLines(before, &Doc()));
}

TEST_F(PreviewTest, ThePictureHasItsSizeAndReplacesAnEarlierOne) {
  fs::create_directory(Folder() + "/shot_SM");
  tests::WriteText(File("v1.2"), "old");
  Record("v1.2");
  BaseBitmap* picture = BaseBitmap::Alloc();
  EXPECT_EQ(picture->Init(Filename(File("v1.2").c_str())), IMAGERESULT_OK);
  EXPECT_EQ(picture->GetBw(), 160);
  EXPECT_EQ(picture->GetBh(), 120);
  BaseBitmap::Free(picture);
  EXPECT_EQ(tests::Names(Folder() + "/shot_SM"), "v1.2.tif");
}

TEST_F(PreviewTest, APictureThatCannotBeSavedChangesNothingElse) {
  const BaseContainer before = Settings();
  tests::WriteText(Folder() + "/shot_SM", "a file");
  Record("A");
  EXPECT_EQ(tests::ReadText(Folder() + "/shot_SM"), "a file");
  EXPECT_EQ(Settings(), before);
  EXPECT_EQ(Rows(), "[ ] * A\n");
  EXPECT_EQ(App().Documents().size(), 1U);
}

TEST_F(PreviewTest, AnUnsavedDocumentIsRecordedWithoutOne) {
  Doc().SetDocumentPath(Filename());
  Record("A");
  EXPECT_NE(Transcript().find("tell: You must save your document before you can generate preview images.\n"), std::string::npos);
  EXPECT_EQ(Rows(), "[ ] * A\n");
}

TEST_F(PreviewTest, ANameThatLeadsElsewhereWritesNothing) {
  for (const char* name : {"../x", "/x", "./x", "sub/x"}) Record(name);
  EXPECT_EQ(tests::Names(Folder()), "shot_SM");
  EXPECT_EQ(tests::Names(Folder() + "/shot_SM"), "");
}

}  // namespace
}  // namespace stagemarks
