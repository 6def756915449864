// Effects of loading an element on the scene, and of one Undo after it.
#include "engine/scene/SceneDump.h"
#include "source/Stagemarks/keys/TagTypes.h"
#include "tests/source/StageTest.h"

namespace stagemarks {
namespace {

class RecallTest : public StageTest {
 protected:
  // A scene with everything that is recorded.
  void SetUp() override {
    wood_ = Material("Wood");
    steel_ = Material("Steel");
    cube_ = Object("Cube", nullptr, Ocube);
    child_ = Object("Child", cube_);
    eye_ = Object("Eye", nullptr, Ocamera);
    texture_ = Texture(cube_, wood_);
    compositing_ = Tag(child_, Tcompositing);
    sketch_ = Tag(child_, 1011012);
    sketch_->GetDataInstance()->SetLong(1, 11);
    layer_ = Layer("Set");
    Doc().GetRenderBaseDraw()->SetSceneCamera(eye_, FALSE);
  }

  // Changes all of it.
  void ChangeEverything() {
    SetSwitches(cube_, MODE_OFF, MODE_ON, FALSE);
    SetSwitches(child_, MODE_ON, MODE_OFF, TRUE);
    texture_->SetMaterial(steel_);
    compositing_->GetDataInstance()->SetLong(1000, 0);
    sketch_->GetDataInstance()->SetLong(1, 12);
    sketch_->GetDataInstance()->SetLong(2, 22);
    LayerData data = layer_->GetLayerData(&Doc(), TRUE);
    data.solo = TRUE;
    data.view = FALSE;
    data.animation = FALSE;
    data.color = Vector(1, 0, 0);
    layer_->SetLayerData(&Doc(), data);
    Doc().GetRenderBaseDraw()->SetSceneCamera(nullptr, FALSE);
    Doc().GetActiveRenderData()->GetDataInstance()->SetLong(RDATA_XRES, 4096);
  }

  // The recorded state as text, without the link that a loaded tag holds to itself and without the
  // layer's color.
  std::string State() const { return engine::DumpState(Doc()); }

  BaseMaterial* wood_ = nullptr;
  BaseMaterial* steel_ = nullptr;
  BaseObject* cube_ = nullptr;
  BaseObject* child_ = nullptr;
  BaseObject* eye_ = nullptr;
  TextureTag* texture_ = nullptr;
  BaseTag* compositing_ = nullptr;
  BaseTag* sketch_ = nullptr;
  LayerObject* layer_ = nullptr;
};

TEST_F(RecallTest, LoadingBringsEveryCategoryBackAndOneUndoTakesItBack) {
  Record("A");
  ChangeEverything();
  const std::string changed = State();
  ASSERT_TRUE(Load("A"));
  EXPECT_EQ(Switches(cube_) + " / " + Switches(child_), "2 2 1 / 2 2 1");
  EXPECT_EQ(texture_->GetMaterial(), wood_);
  EXPECT_EQ(compositing_->GetDataInstance()->GetLong(1000), 1);
  EXPECT_EQ(tests::ContainerText(*sketch_->GetDataInstance(), &Doc()),
            "{1 11, 40000 ->tag 1011012 of Child}");
  EXPECT_EQ(Doc().GetRenderBaseDraw()->GetSceneCamera(&Doc()), eye_);
  EXPECT_EQ(SettingsText(), "* Render Settings 1280\n  A 1280\n");
  LayerData flags;
  flags.color = Vector(1, 0, 0);
  EXPECT_EQ(layer_->GetLayerData(&Doc(), TRUE), flags) << "the color is no part of the record";

  const std::string loaded = State();
  ASSERT_TRUE(Undo());
  EXPECT_EQ(State(), changed);
  EXPECT_FALSE(Undo()) << "one load is one step";
  ASSERT_TRUE(Redo());
  EXPECT_EQ(State(), loaded);
}

struct OptionCase {
  const CHAR* name;
  Option option;
  const CHAR* applied;
};

class RecalledCategory : public RecallTest, public testing::WithParamInterface<OptionCase> {
 protected:
  // Which categories are as they were recorded.
  std::string Applied() const {
    std::string text;
    if (Switches(cube_) == "2 2 1") text += "objects ";
    if (!layer_->GetLayerData(&Doc(), TRUE).solo) text += "layers ";
    if (Doc().GetActiveRenderData()->GetDataInstance()->GetLong(RDATA_XRES) == 1280)
      text += "render ";
    if (Doc().GetRenderBaseDraw()->GetSceneCamera(&Doc()) == eye_) text += "camera ";
    if (texture_->GetMaterial() == wood_) text += "materials ";
    if (compositing_->GetDataInstance()->GetLong(1000) == 1) text += "compositing ";
    if (sketch_->GetDataInstance()->GetLong(1) == 11) text += "style ";
    return text;
  }
};

TEST_P(RecalledCategory, IsAppliedWhenItsOptionIsOnAtLoading) {
  Record("A");
  ChangeEverything();
  ASSERT_EQ(Applied(), "");
  OnlyOptions({GetParam().option});
  Load("A");
  EXPECT_EQ(Applied(), GetParam().applied);
}

INSTANTIATE_TEST_SUITE_P(ByOption, RecalledCategory,
                         testing::Values(OptionCase{"Objects", Option::Objects, "objects "},
                                         OptionCase{"Layers", Option::Layers, "layers "},
                                         OptionCase{"Render", Option::RenderSettings, "render "},
                                         OptionCase{"Camera", Option::ActiveCamera, "camera "},
                                         OptionCase{"Materials", Option::Materials, "materials "},
                                         OptionCase{"Compositing", Option::CompositingTags,
                                                    "compositing "},
                                         OptionCase{"Style", Option::SketchStyleTags, "style "},
                                         OptionCase{"OtherTags", Option::SketchRenderTags, ""}),
                         [](const auto& test) { return test.param.name; });

TEST_F(RecallTest, ExactlyOneEntryIsCurrentAfterALoad) {
  for (const CHAR* name : {"A", "B", "C"}) Record(name);
  Load("B");
  EXPECT_EQ(Rows(), "[ ] A\n[ ] * B\n[ ] C\n");
  EXPECT_TRUE(Doc().GetChanged());
}

TEST_F(RecallTest, TheDocumentIsToldOfEachAppliedLayer) {
  constexpr LONG kLayersChanged = 32;
  Record("A");
  Load("A");
  EXPECT_TRUE(Doc().GetNBit(kLayersChanged));
  Layer("Other");
  Record("B");
  Load("B");
  EXPECT_TRUE(Doc().GetNBit(kLayersChanged)) << "two layers flip the bit twice";
}

TEST_F(RecallTest, NothingSelectedLoadsNothing) {
  Record("A");
  ChangeEverything();
  const std::string before = State();
  EXPECT_TRUE(Press(kLoad));
  EXPECT_EQ(State(), before);
  EXPECT_FALSE(Undo());
}

TEST_F(RecallTest, WhatIsNewSinceTheRecordingIsLeftAlone) {
  Record("A");
  BaseObject* late = Object("Late");
  SetSwitches(late, MODE_OFF, MODE_OFF, FALSE);
  TextureTag* lateTag = Texture(late, steel_);
  LayerObject* lateLayer = Layer("LateLayer");
  LayerData data = lateLayer->GetLayerData(&Doc(), TRUE);
  data.solo = TRUE;
  lateLayer->SetLayerData(&Doc(), data);
  Load("A");
  EXPECT_EQ(Switches(late), "1 1 0");
  EXPECT_EQ(lateTag->GetMaterial(), steel_);
  EXPECT_TRUE(lateLayer->GetLayerData(&Doc(), TRUE).solo);
}

TEST_F(RecallTest, LinksToDeletedThingsAreSkipped) {
  Record("A");
  ChangeEverything();
  BaseTag* compositing = compositing_;
  BaseTag::Free(compositing);
  LayerObject::Free(layer_);
  BaseMaterial::Free(wood_);
  RenderData* copy = Doc().GetFirstRenderData()->GetNext();
  RenderData::Free(copy);
  BaseObject::Free(eye_);
  EXPECT_TRUE(Load("A"));
  EXPECT_EQ(Switches(cube_), "2 2 1");
  EXPECT_EQ(texture_->GetMaterial(), nullptr) << "a material that is gone is taken off";
  EXPECT_EQ(SettingsText(), "* Render Settings 4096\n");
  EXPECT_EQ(Doc().GetRenderBaseDraw()->GetSceneCamera(&Doc()), nullptr);
  BaseObject::Free(cube_);
  EXPECT_TRUE(Load("A"));
}

TEST_F(RecallTest, RecordsOfAnotherDocumentResolveToNothing) {
  Record("A");
  const BaseContainer records = Store(kRecordStore);
  const BaseContainer entries = Store(kListStore);
  SetActiveDocument(App().NewDocument());
  Doc().GetDataInstance()->SetContainer(kRecordStore, records);
  Doc().GetDataInstance()->SetContainer(kListStore, entries);
  Object("Other");
  host::EventAdd();
  Deliver();
  const std::string before = State();
  EXPECT_TRUE(Load("A"));
  EXPECT_EQ(State(), before);
  EXPECT_TRUE(Load("A"));
  Answer(true);
  EXPECT_TRUE(Delete("A"));
  EXPECT_EQ(Rows(), "");
}

TEST_F(RecallTest, LoadingNeverSwitchesToTheRecordedCopy) {
  RenderData* second = RenderData::Alloc();
  second->SetName("Final");
  second->GetDataInstance()->SetLong(RDATA_XRES, 4096);
  Doc().InsertRenderData(second, nullptr, Doc().GetFirstRenderData());
  Doc().SetActiveRenderData(second);
  Doc().GetFirstRenderData()->SetName("First");
  Record("A");
  ASSERT_EQ(SettingsText(), "  First 1280\n  A 4096\n* Final 4096\n");
  Load("A");
  EXPECT_EQ(SettingsText(), "* First 4096\n  A 4096\n  Final 4096\n");
  Undo();
  EXPECT_EQ(SettingsText(), "  First 1280\n  A 4096\n* Final 4096\n");
}

TEST_F(RecallTest, AnElementWithoutRecordsChangesNothing) {
  OnlyOptions({});
  Record("A");
  for (const OptionRow& row : kOptions) Menu(row.id);
  ChangeEverything();
  const std::string before = State();
  EXPECT_TRUE(Load("A"));
  EXPECT_EQ(State(), before);
  EXPECT_TRUE(Undo()) << "the render settings are registered all the same";
}

TEST_F(RecallTest, RecordsUnderKeysThatAreNoPositionsAreNotApplied) {
  Record("A");
  BaseContainer* record =
      Doc().GetDataInstance()->GetContainerInstance(kRecordStore)->GetContainerInstance(0);
  for (const LONG part : {kObjects, kLayers, kTags}) {
    BaseContainer moved = record->GetContainer(part);
    const BaseContainer first = moved.GetContainer(0);
    moved.RemoveData(0);
    moved.SetContainer(900, first);
    record->SetContainer(part, moved);
  }
  ChangeEverything();
  Load("A");
  EXPECT_EQ(Switches(cube_), "1 0 0");
  EXPECT_EQ(Switches(child_), "2 2 1");
  EXPECT_EQ(texture_->GetMaterial(), steel_);
  EXPECT_EQ(sketch_->GetDataInstance()->GetLong(1), 11);
  EXPECT_TRUE(layer_->GetLayerData(&Doc(), TRUE).solo);
}

TEST_F(RecallTest, MissingKeysReadAsZero) {
  Record("A");
  BaseContainer* record =
      Doc().GetDataInstance()->GetContainerInstance(kRecordStore)->GetContainerInstance(0);
  record->GetContainerInstance(kObjects)->GetContainerInstance(0)->RemoveData(kRenderMode);
  record->GetContainerInstance(kLayers)->GetContainerInstance(0)->RemoveData(80002);
  Load("A");
  EXPECT_EQ(Switches(cube_), "2 0 1");
  EXPECT_FALSE(layer_->GetLayerData(&Doc(), TRUE).view);
}

TEST_F(RecallTest, WrongContentInTheStoresIsPassedOver) {
  Record("A");
  BaseContainer* store = Doc().GetDataInstance()->GetContainerInstance(kRecordStore);
  BaseContainer* record = store->GetContainerInstance(0);
  record->GetContainerInstance(kRender)->SetLink(kRenderLink, cube_);
  record->GetContainerInstance(kCamera)->SetLong(kCameraLink, 5);
  record->GetContainerInstance(kObjects)->SetString(0, "no record");
  record->GetContainerInstance(kTags)->GetContainerInstance(0)->SetLink(kTagLink, cube_);
  record->SetString(kLayers, "no container");
  EXPECT_TRUE(Load("A"));
  EXPECT_EQ(SettingsText(), "* Render Settings 1280\n  A 1280\n");
  EXPECT_EQ(Doc().GetRenderBaseDraw()->GetSceneCamera(&Doc()), nullptr);
  Answer(true);
  EXPECT_TRUE(Delete("A"));
  EXPECT_EQ(Doc().GetFirstObject(), cube_) << "only render settings are freed with an element";
}

TEST_F(RecallTest, CompositingParametersComeBackWithTheTypeTheyWereStoredWith) {
  BaseContainer* data = compositing_->GetDataInstance();
  data->FlushAll();
  for (const CompositingRow& row : kCompositing) data->SetReal(row.parameter, row.parameter + 0.5);
  Record("A");
  data->FlushAll();
  data->SetLong(4711, 1);
  Load("A");
  EXPECT_EQ(data->GetCount(), 51) << "a parameter that is not recorded stays";
  EXPECT_EQ(data->GetType(1000), DA_LONG);
  EXPECT_EQ(data->GetLong(1000), 1);
  EXPECT_EQ(data->GetLong(1110), 1110);
  EXPECT_EQ(data->GetReal(1151), 1151.5);
  EXPECT_EQ(data->GetReal(1144), 1144.5);
}

}  // namespace
}  // namespace stagemarks
