// Records that updating and setting write into the checked elements.
#include "engine/scene/DocumentState.h"
#include "source/Stagemarks/keys/TagTypes.h"
#include "tests/source/StageTest.h"

namespace stagemarks {
namespace {

class BulkEditTest : public StageTest {
 protected:
  BaseContainer& LiveElement(LONG id) {
    return *Doc().GetDataInstance()->GetContainerInstance(kRecordStore)->GetContainerInstance(id);
  }
  void Select(BaseObject* object) { Doc().SetActiveObject(object, SELECTION_ADD); }
  // Chooses a menu entry; whether the document was marked changed by it.
  bool Changes(LONG entry) {
    engine::ClearChanged(Doc());
    Menu(entry);
    return Doc().GetChanged();
  }
};

TEST_F(BulkEditTest, UpdatingAppendsWhatTheSceneGainedWhateverTheOptionsSay) {
  BaseObject* old = Object("Old");
  BaseMaterial* red = Material("Red");
  OnlyOptions({});
  Record("A");
  Record("B");
  SetSwitches(Object("Child", old), MODE_OFF, MODE_ON, FALSE);
  Texture(old, red);
  Tag(old, Tphong);
  Tag(old, kVRayTag)->GetDataInstance()->SetLong(7, 8);
  Layer("L");
  const std::string other = tests::ContainerText(Element(1), &Doc());
  Check("A");
  EXPECT_FALSE(Changes(kUpdateChecked));
  EXPECT_EQ(Part(0, kObjects),
            "0 {30000 ->Old, 30001 2, 30002 2, 30003 1}\n1 #1{30000 ->Child, 30001 1, 30002 0, "
            "30003 0}\n");
  EXPECT_EQ(Part(0, kTags),
            "0 {50000 ->Red, 40000 ->tag 5616 of Old}\n1 #1{7 8, 40000 ->tag 1021738 of Old}\n");
  EXPECT_EQ(Part(0, kLayers),
            "0 {80000 ->L, 80001 0, 80002 1, 80003 1, 80004 1, 80005 0, 80006 1, 80007 1, 80008 1, "
            "80009 1}\n");
  EXPECT_EQ(tests::ContainerText(Element(1), &Doc()), other);
  const std::string once = StoreText(kRecordStore);
  Menu(kUpdateChecked);
  EXPECT_EQ(StoreText(kRecordStore), once);
}

TEST_F(BulkEditTest, UpdatingCapturesACompositingTagAsRecordingDoes) {
  BaseObject* object = Object("O");
  OnlyOptions({Option::CompositingTags});
  Record("Before");
  Tag(object, Tcompositing)->GetDataInstance()->SetBool(COMPOSITINGTAG_CASTSHADOW, TRUE);
  Record("After");
  Check("Before");
  Menu(kUpdateChecked);
  EXPECT_EQ(Part(0, kTags), Part(1, kTags));
  EXPECT_EQ(Element(0).GetContainer(kTags).GetContainer(0).GetCount(), 51);
}

TEST_F(BulkEditTest, ADeletedAndRemadeObjectIsNew) {
  BaseObject* object = Object("O");
  Record("A");
  BaseObject::Free(object);
  Object("O");
  Check("A");
  Menu(kUpdateChecked);
  EXPECT_EQ(
      Part(0, kObjects),
      "0 {30000 ->gone, 30001 2, 30002 2, 30003 1}\n1 #1{30000 ->O, 30001 2, 30002 2, 30003 1}\n");
}

TEST_F(BulkEditTest, UpdatingFillsTheLowestFreeKeysAndSettingCountsEntries) {
  for (const CHAR* name : {"O", "P", "Q"}) Object(name);
  Record("A");
  Record("B");
  Check("A");
  Check("B");
  for (const LONG id : {0, 1}) LiveElement(id).GetContainerInstance(kObjects)->RemoveData(1);
  const BaseContainer gap = Element(0);
  Menu(kUpdateChecked);
  EXPECT_EQ(Element(0).GetContainer(kObjects).GetIndexId(2), 1);

  LiveElement(0) = gap;
  Select(Doc().GetFirstObject()->GetNext());
  Menu(kSetObjects);
  // Two entries under 0 and 2: the number of entries is a key that is taken, and what stands there
  // is replaced.
  EXPECT_EQ(
      Part(0, kObjects),
      "0 {30000 ->O, 30001 2, 30002 2, 30003 1}\n2 #2{30000 ->P, 30001 2, 30002 2, 30003 1}\n");
}

TEST_F(BulkEditTest, SettingObjectsRefreshesInPlaceAndAppends) {
  BaseObject* known = Object("Known");
  Object("Other");
  Record("A");
  SetSwitches(known, MODE_ON, MODE_OFF, FALSE);
  Select(known);
  Select(Object("New"));
  Check("A");
  EXPECT_TRUE(Changes(kSetObjects));
  EXPECT_EQ(Part(0, kObjects),
            "0 {30000 ->Known, 30001 0, 30002 1, 30003 0}\n1 #1{30000 ->Other, 30001 2, 30002 2, "
            "30003 1}\n"
            "2 #2{30000 ->New, 30001 2, 30002 2, 30003 1}\n");
}

TEST_F(BulkEditTest, SettingTagsReplacesTheirValuesAndKeepsTheRest) {
  BaseObject* object = Object("O");
  BaseTag* tag = Tag(object, kVRayTag);
  tag->GetDataInstance()->SetLong(1, 10);
  tag->GetDataInstance()->SetLong(2, 20);
  Record("A");
  tag->GetDataInstance()->FlushAll();
  tag->GetDataInstance()->SetLong(2, 21);
  tag->GetDataInstance()->SetLong(3, 30);
  TextureTag* texture = Texture(object, Material("M"));
  BaseTag* plain = Tag(object, Tphong);
  for (BaseTag* one : {tag, static_cast<BaseTag*>(texture), plain})
    Doc().SetActiveTag(one, SELECTION_ADD);
  OnlyOptions({});
  Check("A");
  EXPECT_TRUE(Changes(kSetTags));
  EXPECT_EQ(
      Part(0, kTags),
      "0 {1 10, 2 21, 40000 ->tag 1021738 of O, 3 30}\n1 #1{50000 ->M, 40000 ->tag 5616 of O}\n");
}

// A tag that was loaded once carries its record's link in its own data; a copy of it then points to
// the original.
TEST_F(BulkEditTest, ALinkInATagsOwnDataGoesIntoItsRecord) {
  BaseTag* first = Tag(Object("O"), kVRayTag);
  BaseTag* second = Tag(Object("P"), kVRayTag);
  Record("A");
  second->GetDataInstance()->SetLink(kTagLink, first);
  Doc().SetActiveTag(second, SELECTION_ADD);
  Doc().SetActiveTag(first, SELECTION_ADD);
  Check("A");
  Menu(kSetTags);
  EXPECT_EQ(Part(0, kTags), "0 {40000 ->tag 1021738 of O}\n1 #1{40000 ->tag 1021738 of O}\n");
}

TEST_F(BulkEditTest, ATagIsWrittenIntoTheFirstRecordThatLinksToItMeanwhile) {
  BaseTag* first = Tag(Object("O"), kVRayTag);
  BaseTag* second = Tag(Object("P"), kVRayTag);
  Record("A");
  first->GetDataInstance()->SetLink(kTagLink, second);
  second->GetDataInstance()->SetLong(2, 20);
  for (BaseTag* tag : {first, second}) Doc().SetActiveTag(tag, SELECTION_ADD);
  Check("A");
  Menu(kSetTags);
  EXPECT_EQ(Part(0, kTags), "0 {40000 ->tag 1021738 of P, 2 20}\n1 #1{40000 ->tag 1021738 of P}\n");
}

TEST_F(BulkEditTest, SettingLayersRefreshesAndAppendsWithoutSelectionIsAChangeAllTheSame) {
  LayerObject* known = Layer("Known");
  Layer("Other");
  Record("A");
  Check("A");
  const std::string before = Part(0, kLayers);
  EXPECT_TRUE(Changes(kSetLayers));
  EXPECT_EQ(Part(0, kLayers), before);

  LayerData data = known->GetLayerData(&Doc(), TRUE);
  data.solo = TRUE;
  known->SetLayerData(&Doc(), data);
  known->SetBit(BIT_ACTIVE);
  Layer("New", known)->SetBit(BIT_ACTIVE);
  EXPECT_TRUE(Changes(kSetLayers));
  const std::string rest =
      " 80002 1, 80003 1, 80004 1, 80005 0, 80006 1, 80007 1, 80008 1, 80009 1}\n";
  EXPECT_EQ(Part(0, kLayers), "0 {80000 ->Known, 80001 1," + rest + "1 #1{80000 ->Other, 80001 0," +
                                  rest + "2 #2{80000 ->New, 80001 0," + rest);
}

TEST_F(BulkEditTest, OnlyTheActiveCameraBecomesTheElementsCamera) {
  BaseObject* camera = Object("Eye", nullptr, Ocamera);
  BaseObject* other = Object("Null");
  Record("A");
  Transcript();
  Menu(kSetCamera);
  Check("A");
  Select(camera);
  Select(other);
  Menu(kSetCamera);
  EXPECT_EQ(Transcript(), "tell: You must select a camera!\ntell: You must select a camera!\n");
  EXPECT_EQ(Part(0, kCamera), "70000 ->nothing\n");
  Select(camera);
  Doc().SetActiveObject(camera, SELECTION_NEW);
  EXPECT_FALSE(Changes(kSetCamera));
  EXPECT_EQ(Part(0, kCamera), "70000 ->Eye\n");
  EXPECT_EQ(Transcript(), "");
}

struct BulkEntry {
  const char* name;
  LONG entry;
  bool changed;  // with nothing checked
};

class BulkEntryTest : public BulkEditTest, public testing::WithParamInterface<BulkEntry> {};

TEST_P(BulkEntryTest, WritesNothingWhereNothingIsChecked) {
  BaseObject* camera = Object("Eye", nullptr, Ocamera);
  Layer("L")->SetBit(BIT_ACTIVE);
  Record("A");
  Select(camera);
  Object("New");
  Doc().SetActiveTag(Tag(camera, Ttexture), SELECTION_ADD);
  const std::string before = StoreText(kRecordStore);
  EXPECT_EQ(Changes(GetParam().entry), GetParam().changed);
  EXPECT_EQ(StoreText(kRecordStore), before);
}

// Somebody else has exchanged two names, and the rows are still those of before.
TEST_P(BulkEntryTest, WritesIntoTheElementThatHasTheNameInTheDocument) {
  BaseObject* camera = Object("Eye", nullptr, Ocamera);
  Record("A");
  Record("B");
  Check("A");
  SetSwitches(camera, MODE_OFF, MODE_OFF, FALSE);
  Doc().SetActiveObject(camera, SELECTION_NEW);
  Doc().SetActiveTag(Texture(camera, nullptr), SELECTION_ADD);
  Layer("L")->SetBit(BIT_ACTIVE);
  BaseContainer* entries = Doc().GetDataInstance()->GetContainerInstance(kListStore);
  entries->GetContainerInstance(0)->SetString(kName, "B");
  entries->GetContainerInstance(1)->SetString(kName, "A");
  const std::string before = tests::ContainerText(Element(0), &Doc());
  const std::string other = tests::ContainerText(Element(1), &Doc());
  Menu(GetParam().entry);
  EXPECT_EQ(tests::ContainerText(Element(0), &Doc()), before);
  EXPECT_NE(tests::ContainerText(Element(1), &Doc()), other);
}

INSTANTIATE_TEST_SUITE_P(Entries, BulkEntryTest,
                         testing::Values(BulkEntry{"Update", kUpdateChecked, false},
                                         BulkEntry{"Objects", kSetObjects, false},
                                         BulkEntry{"Tags", kSetTags, false},
                                         BulkEntry{"Layers", kSetLayers, true},
                                         BulkEntry{"Camera", kSetCamera, false}),
                         [](const auto& test) { return std::string(test.param.name); });

struct Broken {
  const char* name;
  LONG entry;
  LONG part;     // that the second element lacks
  LONG reached;  // a part that is written for the second element all the same, 0: none
};

class BrokenElementTest : public BulkEditTest, public testing::WithParamInterface<Broken> {};

TEST_P(BrokenElementTest, EndsTheCommandAndWhatWasWrittenBeforeStays) {
  for (const CHAR* name : {"A", "B", "C"}) Record(name);
  BaseObject* camera = Object("Eye", nullptr, Ocamera);
  Select(camera);
  Doc().SetActiveTag(Texture(camera, nullptr), SELECTION_ADD);
  Layer("L")->SetBit(BIT_ACTIVE);
  LiveElement(1).RemoveData(GetParam().part);
  std::vector<std::string> before;
  for (const LONG id : {0, 1, 2}) before.push_back(tests::ContainerText(Element(id), &Doc()));
  Menu(kCheckAll);
  EXPECT_FALSE(Changes(GetParam().entry));
  EXPECT_NE(tests::ContainerText(Element(0), &Doc()), before[0]);
  EXPECT_EQ(tests::ContainerText(Element(1), &Doc()) != before[1], GetParam().reached != 0);
  EXPECT_EQ(tests::ContainerText(Element(2), &Doc()), before[2]);
  if (GetParam().reached != 0) {
    EXPECT_NE(Part(1, GetParam().reached), "");
  }
}

INSTANTIATE_TEST_SUITE_P(Parts, BrokenElementTest,
                         testing::Values(Broken{"UpdateObjects", kUpdateChecked, kObjects, 0},
                                         Broken{"UpdateTags", kUpdateChecked, kTags, kObjects},
                                         Broken{"UpdateLayers", kUpdateChecked, kLayers, kTags},
                                         Broken{"SetObjects", kSetObjects, kObjects, 0},
                                         Broken{"SetTags", kSetTags, kTags, 0},
                                         Broken{"SetLayers", kSetLayers, kLayers, 0},
                                         Broken{"SetCamera", kSetCamera, kCamera, 0}),
                         [](const auto& test) { return std::string(test.param.name); });

// Elements are found by position but named by ID: see GetStagemarkID.
TEST_F(BulkEditTest, AnElementBeyondTheNumberOfElementsIsTakenForElementZero) {
  for (const CHAR* name : {"A", "B", "C"}) Record(name);
  for (const LONG store : {kRecordStore, kListStore})
    Doc().GetDataInstance()->GetContainerInstance(store)->RemoveData(1);
  EventAdd();
  Deliver();
  Check("C");
  Select(Object("New"));
  Menu(kSetObjects);
  EXPECT_EQ(Element(0).GetContainer(kObjects).GetCount(), 1);
  EXPECT_EQ(Element(2).GetContainer(kObjects).GetCount(), 0);
}

TEST_F(BulkEditTest, EditsWriteIntoTheDocumentAndNotIntoCopiesOfIt) {
  Object("O");
  Record("A");
  const BaseContainer kept = Store(kRecordStore);
  const std::string before = tests::ContainerLines(kept, &Doc());
  Object("New");
  Check("A");
  Menu(kUpdateChecked);
  EXPECT_EQ(tests::ContainerLines(kept, &Doc()), before);
  EXPECT_NE(StoreText(kRecordStore), before);
}

}  // namespace
}  // namespace stagemarks
