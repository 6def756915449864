// Rendering a preview: the render settings come back as they were, whatever becomes of the picture.
#include <algorithm>
#include <filesystem>

#include "engine/outside/FaultyOutside.h"
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

TEST_F(PreviewTest, AFullDiskOrAStopKeepsQuietAndTheSettings) {
  const BaseContainer before = Settings();
  {
    engine::FaultyOutside faulty(Person());
    const engine::OutsideInUse inUse(faulty);
    faulty.BreakFrom(1, engine::Operation::ReplaceFile);
    Record("First");
    const auto failures = faulty.GetLedger().FailuresSince(0);
    ASSERT_EQ(failures.size(), 1U);
    EXPECT_NE(failures[0].message.find("First.tif"), std::string::npos) << "others can name it";
  }
  EXPECT_EQ(tests::Names(Folder() + "/shot_SM"), "") << "nothing half-written";
  Person().StopProgressAt(1);
  Record("Stopped");
  Person().StopProgressAt(0);
  EXPECT_EQ(Settings(), before);
  EXPECT_EQ(Transcript().find("tell:"), std::string::npos);
  EXPECT_EQ(App().Documents().size(), 1U);
}

TEST_F(PreviewTest, TellsStatesApart) {
  BaseObject* group = Object("Group");
  BaseObject* box = Object("Box", group, Ocube);
  BaseObject* ball = Object("Ball", nullptr, Osphere);
  Matrix beside;
  beside.off = Vector(220, 0, 0);
  ball->SetMl(beside);
  LayerObject* layer = Layer("Layer");
  ball->SetLayerObject(layer);
  BaseMaterial* red = Material("Red");
  red->GetDataInstance()->SetVector(MATERIAL_COLOR, Vector(1, 0, 0));
  TextureTag* texture = Texture(ball, nullptr);
  BaseTag* compositing = Tag(ball, Tcompositing);
  Record("plain");
  std::vector<std::string> pictures{tests::ReadText(File("plain"))};
  const auto differs = [&](const char* name) {
    Record(name);
    const std::string picture = tests::ReadText(File(name));
    EXPECT_TRUE(std::find(pictures.begin(), pictures.end(), picture) == pictures.end()) << name;
    pictures.push_back(picture);
  };
  group->SetRenderMode(MODE_OFF);
  differs("the parent hidden, which the child follows");
  group->SetRenderMode(MODE_UNDEF);
  texture->SetMaterial(red);
  differs("another material");
  box->SetDeformMode(FALSE);
  ball->SetRenderMode(MODE_OFF);
  differs("one generator off, the other one hidden");
  ball->SetRenderMode(MODE_UNDEF);
  compositing->GetDataInstance()->SetBool(COMPOSITINGTAG_RECEIVESHADOW, FALSE);
  differs("one generator off, no shadows received");
  LayerData flags;
  flags.render = FALSE;
  layer->SetLayerData(&Doc(), flags);
  box->SetDeformMode(TRUE);
  differs("the layer not rendered");
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
