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
  for (const LONG missing : {RDATA_FRAMETO, RDATA_FRAMESEQUENCE, 5202})
    Settings().RemoveData(missing);
  Settings().SetLong(5300, 7);
  Settings().SetBool(5076, TRUE);
  const BaseContainer before = Settings();
  Record("A");
  EXPECT_EQ(tests::ContainerLines(Settings(), &Doc()), tests::ContainerLines(before, &Doc()));
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
    const std::size_t mark = Services().ledger.Mark();
    Services().files.BreakFrom(1, engine::Operation::ReplaceFile);
    Record("First");
    Services().files.Mend();
    const auto failures = Services().ledger.FailuresSince(mark);
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

TEST_F(PreviewTest, AnUnsavedDocumentIsRecordedWithoutOne) {
  Doc().SetDocumentPath(Filename());
  Record("A");
  EXPECT_NE(Transcript().find(
                "tell: You must save your document before you can generate preview images.\n"),
            std::string::npos);
  EXPECT_EQ(Rows(), "[ ] * A\n");
}

TEST_F(PreviewTest, ANameThatLeadsElsewhereWritesNothing) {
  for (const char* name : {"../x", "/x", "./x", "sub/x"}) Record(name);
  EXPECT_EQ(tests::Names(Folder()), "shot_SM");
  EXPECT_EQ(tests::Names(Folder() + "/shot_SM"), "");
}

// A group with a box, a ball beside it on a layer with a tag of each kind, and a floor below both.
class StatesTest : public PreviewTest {
 public:
  void SetUp() override {
    PreviewTest::SetUp();
    group = Object("Group");
    box = Object("Box", group, Ocube);
    ball = Object("Ball", nullptr, Osphere);
    Place(ball, 220, 0);
    floor = Object("Floor", nullptr, Oplane);
    Place(floor, 0, -100);
    layer = Layer("Layer");
    ball->SetLayerObject(layer);
    red = Material("Red");
    red->GetDataInstance()->SetVector(MATERIAL_COLOR, Vector(1, 0, 0));
    texture = Texture(ball, nullptr);
    ballTag = Tag(ball, Tcompositing);
    floorTag = Tag(floor, Tcompositing);
  }
  static void Place(BaseObject* object, Real x, Real y) {
    Matrix frame;
    frame.off = Vector(x, y, 0);
    object->SetMl(frame);
  }
  void SetLayer(Bool LayerData::*flag, Bool value) {
    LayerData flags = layer->GetLayerData(&Doc(), TRUE);
    flags.*flag = value;
    layer->SetLayerData(&Doc(), flags);
  }
  std::string Shot(const std::string& name) {
    Record(name);
    return tests::ReadText(File(name));
  }

  BaseObject* group = nullptr;
  BaseObject* box = nullptr;
  BaseObject* ball = nullptr;
  BaseObject* floor = nullptr;
  LayerObject* layer = nullptr;
  BaseMaterial* red = nullptr;
  TextureTag* texture = nullptr;
  BaseTag* ballTag = nullptr;
  BaseTag* floorTag = nullptr;
};

struct Switch {
  const char* name;
  void (*change)(StatesTest&);
};

constexpr Switch kSwitches[] = {
    {"render mode", [](StatesTest& s) { s.box->SetRenderMode(MODE_OFF); }},
    {"undefined mode below a hidden parent",
     [](StatesTest& s) { s.group->SetRenderMode(MODE_OFF); }},
    {"deform mode of a generator", [](StatesTest& s) { s.box->SetDeformMode(FALSE); }},
    {"layer not rendered", [](StatesTest& s) { s.SetLayer(&LayerData::render, FALSE); }},
    {"layer without generators", [](StatesTest& s) { s.SetLayer(&LayerData::generators, FALSE); }},
    {"layer solo", [](StatesTest& s) { s.SetLayer(&LayerData::solo, TRUE); }},
    {"material", [](StatesTest& s) { s.texture->SetMaterial(s.red); }},
    {"casts no shadows",
     [](StatesTest& s) {
       s.ballTag->GetDataInstance()->SetBool(COMPOSITINGTAG_CASTSHADOW, FALSE);
     }},
    {"receives no shadows",
     [](StatesTest& s) {
       s.floorTag->GetDataInstance()->SetBool(COMPOSITINGTAG_RECEIVESHADOW, FALSE);
     }},
    {"not seen by the camera",
     [](StatesTest& s) {
       s.ballTag->GetDataInstance()->SetBool(COMPOSITINGTAG_SEENBYCAMERA, FALSE);
     }},
};

TEST_F(StatesTest, EachSwitchHasItsOwnPictureAndRecallBringsItBack) {
  const std::string plain = Shot("plain");
  for (const Switch& c : kSwitches) {
    c.change(*this);
    const std::string changed = Shot(c.name);
    EXPECT_NE(changed, plain) << c.name;
    Load("plain");
    EXPECT_EQ(Shot(std::string("plain after ") + c.name), plain);
    Load(c.name);
    EXPECT_EQ(Shot(std::string("again ") + c.name), changed) << c.name;
    Load("plain");
  }
}

}  // namespace
}  // namespace stagemarks
