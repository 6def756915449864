// Data that a recording takes from the scene.
#include "tests/source/StageTest.h"

#include "engine/core/ContainerContents.h"
#include "host/Parameters.h"
#include "source/Stagemarks/keys/TagTypes.h"

namespace stagemarks {
namespace {

class RecordingTest : public StageTest {};

BaseVideoPost* Post(RenderData* settings, LONG bits) {
  BaseVideoPost* post = BaseVideoPost::Alloc(VPglobalillumination);
  post->SetAllBits(bits);
  settings->InsertVideoPost(post);
  return post;
}

TEST_F(RecordingTest, RenderSettingsAreCopiedBehindTheFirstOnes) {
  RenderData* second = RenderData::Alloc();
  second->SetName("Final");
  second->GetDataInstance()->SetLong(RDATA_XRES, 4096);
  Doc().InsertRenderData(second, nullptr, Doc().GetFirstRenderData());
  Doc().SetActiveRenderData(second);
  Record("A");
  Record("B");
  EXPECT_EQ(SettingsText(), "  Render Settings 1280\n  B 4096\n  A 4096\n* Final 4096\n");
}

TEST_F(RecordingTest, PostsAndPassesKeepTheirSwitchesAndNoOtherBits) {
  RenderData* source = Doc().GetActiveRenderData();
  for (const LONG bits : {0, BIT_DISABLED | BIT_ACTIVE, BIT_ACTIVE}) Post(source, bits);
  MultipassObject* pass = MultipassObject::Alloc(Zmultipass);
  pass->SetAllBits(BIT_DISABLED);
  source->InsertMultipass(pass);
  Record("A");
  const RenderData* copy = source->GetNext();
  std::string bits;
  for (const BaseVideoPost* post = copy->GetFirstVideoPost(); post; post = post->GetNext()) {
    bits += std::to_string(post->GetAllBits()) + " ";
  }
  EXPECT_EQ(bits, "0 4 0 ");
  EXPECT_EQ(copy->GetFirstMultipass()->GetAllBits(), BIT_DISABLED);
}

TEST_F(RecordingTest, ASwitchedOffCategoryCarriesOverWhatWasRecordedBefore) {
  Layer("L");
  Doc().GetRenderBaseDraw()->SetSceneCamera(Object("Eye", nullptr, Ocamera), FALSE);
  Record("A");
  OnlyOptions({});
  Object("New");
  Record("B");
  EXPECT_EQ(Part(1, kRender), "25000 ->A\n");
  for (const LONG key : {kRender, kLayers, kCamera, kObjects, kTags})
    EXPECT_EQ(Part(1, key), Part(0, key)) << key;
}

TEST_F(RecordingTest, SwitchedOffCategoriesOfAFreshDialogAreEmpty) {
  Layer("L");
  Object("Eye", nullptr, Ocamera);
  OnlyOptions({});
  Record("A");
  EXPECT_EQ(tests::ContainerText(Element(0), &Doc()),
            "{20000 \"A\", 25000 {}, 25003 {}, 25004 {}, 25005 {}, 25006 {}, "
            "20002 {25008 2011, 25009 3, 25010 5, 25011 14, 25012 7, 25013 59}}");
}

TEST_F(RecordingTest, ASmallerRecordingLeavesTheLargerOnesEntriesBehindItsOwn) {
  for (const CHAR* name : {"L1", "L2", "L3"}) Layer(name);
  for (const CHAR* name : {"O1", "O2", "O3"}) Texture(Object(name), nullptr);
  Record("A");
  SetActiveDocument(App().NewDocument());
  Deliver();
  Layer("M1");
  Texture(Object("P1"), nullptr);
  Record("B");
  const std::string flags =
      ", 80001 0, 80002 1, 80003 1, 80004 1, 80005 0, 80006 1, 80007 1, 80008 1, 80009 1}\n";
  EXPECT_EQ(Part(0, kLayers),
            "0 {80000 ->M1" + flags + "1 #1{80000 ->gone" + flags + "2 #2{80000 ->gone" + flags);
  EXPECT_EQ(
      Part(0, kObjects),
      "0 {30000 ->P1, 30001 2, 30002 2, 30003 1}\n1 #1{30000 ->gone, 30001 2, 30002 2, 30003 1}\n"
      "2 #2{30000 ->gone, 30001 2, 30002 2, 30003 1}\n");
  EXPECT_EQ(Part(0, kTags),
            "0 {50000 ->nothing, 40000 ->tag 5616 of P1}\n1 #1{50000 ->nothing, 40000 ->gone}\n"
            "2 #2{50000 ->nothing, 40000 ->gone}\n");
}

TEST_F(RecordingTest, LoadingEmptiesTheWorkContainersAndClosingTheWindowDoesNot) {
  for (const CHAR* name : {"O1", "O2"}) Object(name);
  Record("A");
  BaseObject* last = Doc().GetFirstObject()->GetNext();
  BaseObject::Free(last);
  Dialog().Close();
  App().ExecuteCommand(kPluginId);
  Deliver();
  Record("B");
  Load("A");
  Record("C");
  EXPECT_EQ(Element(1).GetContainer(kObjects).GetCount(), 2);
  EXPECT_EQ(Element(2).GetContainer(kObjects).GetCount(), 1);
}

TEST_F(RecordingTest, WhatIsRecordedAgainUnchangedIsSharedAlsoAfterALoad) {
  for (int i = 0; i < 5; ++i) Texture(Object("o"), nullptr);
  const auto parts = [this](LONG element) {
    return std::make_pair(engine::BodyOf(Element(element).GetContainer(kObjects)),
                          engine::BodyOf(Element(element).GetContainer(kTags)));
  };
  Record("A");
  Record("B");
  EXPECT_EQ(parts(1), parts(0));
  Load("A");
  Record("C");
  EXPECT_EQ(parts(2), parts(0));
}

TEST_F(RecordingTest, AfterALoadNothingOfTheLoadedElementIsLeftInTheNextOne) {
  std::vector<BaseObject*> objects;
  for (int i = 0; i < 5; ++i) objects.push_back(Object("o"));
  for (BaseObject* object : objects) Texture(object, nullptr);
  Record("A");
  Load("A");
  for (int i = 2; i < 5; ++i) BaseObject::Free(objects[static_cast<std::size_t>(i)]);
  Record("B");
  EXPECT_EQ(Element(1).GetContainer(kObjects).GetCount(), 2);
  EXPECT_EQ(Element(1).GetContainer(kTags).GetCount(), 2);
  Load("B");
  OnlyOptions({});
  Record("C");
  EXPECT_EQ(Part(2, kObjects) + Part(2, kTags), "");
}

// Only an edit from outside leaves records under such keys.
TEST_F(RecordingTest, RecordsStandInTheirOrderWhateverTheOrderOfTheLoadedOnes) {
  for (const CHAR* name : {"O", "P"}) Object(name);
  Record("A");
  BaseContainer* record =
      Doc().GetDataInstance()->GetContainerInstance(kRecordStore)->GetContainerInstance(0);
  const BaseContainer objects = record->GetContainer(kObjects);
  BaseContainer moved;
  moved.SetContainer(2, objects.GetContainer(0));
  moved.SetContainer(1, objects.GetContainer(1));
  record->SetContainer(kObjects, moved);
  Load("A");
  Object("Q");
  Record("B");
  const BaseContainer written = Element(1).GetContainer(kObjects);
  for (LONG i = 0; i < 3; ++i) EXPECT_EQ(written.GetIndexId(i), i);
}

// As the manual tells it: the object behind the deleted one is recorded twice, and the old record
// is applied last.
TEST_F(RecordingTest, AfterADeletionOldRecordsHaveTheLastWordUnlessLoadWasPressedBefore) {
  BaseObject* first = Object("First");
  BaseObject* last = Object("Last");
  Record("Before");
  BaseObject::Free(first);
  last->SetRenderMode(MODE_OFF);
  Record("Without a load");
  Load("Without a load");
  EXPECT_EQ(last->GetRenderMode(), MODE_UNDEF) << "as it was before the deletion";
  last->SetRenderMode(MODE_OFF);
  Record("After a load");
  last->SetRenderMode(MODE_ON);
  Load("After a load");
  EXPECT_EQ(last->GetRenderMode(), MODE_OFF);
}

TEST_F(RecordingTest, ObjectsAndLayersAreNumberedInPreOrder) {
  BaseObject* a = Object("A");
  BaseObject* a1 = Object("A1", a);
  Object("A1x", a1);
  Object("A2", a);
  Object("B");
  LayerObject* l = Layer("L");
  Layer("L1", l);
  Layer("M");
  Record("S");
  const std::string modes = ", 30001 2, 30002 2, 30003 1}\n";
  EXPECT_EQ(Part(0, kObjects), "0 {30000 ->A" + modes + "1 #1{30000 ->A1" + modes +
                                   "2 #2{30000 ->A1x" + modes + "3 #3{30000 ->A2" + modes +
                                   "4 #4{30000 ->B" + modes);
  std::string layers;
  for (LONG i = 0; i < 3; ++i) {
    layers += Element(0)
                  .GetContainer(kLayers)
                  .GetContainer(i)
                  .GetLink(kLayerLink, &Doc())
                  ->GetName()
                  .ToUtf8() +
              " ";
  }
  EXPECT_EQ(layers, "L L1 M ");
}

TEST_F(RecordingTest, EachObjectHasItsOwnSwitches) {
  // One switch after the other changes from an object to the next, and all are as before at times.
  constexpr LONG kModes[][3] = {{2, 2, 1}, {2, 2, 1}, {1, 2, 1}, {1, 0, 1}, {1, 0, 0},
                                {1, 0, 0}, {0, 1, 1}, {2, 2, 1}, {2, 2, 0}};
  std::string records;
  for (const auto& modes : kModes) {
    const std::string number = std::to_string(&modes - kModes);
    const std::string name = "o" + number;
    BaseObject* object = Object(name.c_str());
    object->SetEditorMode(modes[0]);
    object->SetRenderMode(modes[1]);
    object->SetDeformMode(modes[2] != 0);
    records += number + (number == "0" ? " " : " #" + number) + "{30000 ->" + name;
    for (LONG i = 0; i < 3; ++i)
      records += ", " + std::to_string(30001 + i) + " " + std::to_string(modes[i]);
    records += "}\n";
  }
  for (LONG element = 0; element < 2; ++element) {
    Record(element == 0 ? "A" : "B");
    EXPECT_EQ(Part(element, kObjects), records);
  }
}

struct TagCase {
  const CHAR* name;
  LONG type;
  Option option;
  const CHAR* record;  // without the link
};

class RecordedTags : public RecordingTest, public testing::WithParamInterface<TagCase> {};

TEST_P(RecordedTags, AreTakenWithTheirOwnOptionOnly) {
  BaseObject* cube = Object("Cube");
  Tag(cube, Tphong);
  BaseTag* tag = Tag(cube, GetParam().type);
  tag->GetDataInstance()->SetReal(7, 0.5);
  tag->GetDataInstance()->SetString(8, "eight");
  OnlyOptions({GetParam().option});
  Record("A");
  EXPECT_EQ(Part(0, kTags), "0 {" + std::string(GetParam().record) + "40000 ->tag " +
                                std::to_string(GetParam().type) + " of Cube}\n");
  EXPECT_EQ(Part(0, kObjects), "");
  Load("A");
  for (const OptionRow& row : kOptions) Menu(row.id);
  if (Marked(10019)) Menu(10019);
  Record("B");
  EXPECT_EQ(Part(1, kTags), "") << "with every other option on";
}

INSTANTIATE_TEST_SUITE_P(
    ByType, RecordedTags,
    testing::Values(
        TagCase{"Texture", 5616, Option::Materials, "50000 ->nothing, "},
        TagCase{"VRayCompositing", 1021738, Option::VRayCompositingTags,
                "7 real 0.5, 8 \"eight\", "},
        TagCase{"VRayPhysical", 1020898, Option::VRayPhysicalCameraTags,
                "7 real 0.5, 8 \"eight\", "},
        TagCase{"VRayDome", 1021891, Option::VRayCameraDomeTags, "7 real 0.5, 8 \"eight\", "},
        TagCase{"MentalRay", 1025604, Option::MentalRayCameraTags, "7 real 0.5, 8 \"eight\", "},
        TagCase{"SketchStyle", 1011012, Option::SketchStyleTags, "7 real 0.5, 8 \"eight\", "},
        TagCase{"SketchRender", 1011961, Option::SketchRenderTags, "7 real 0.5, 8 \"eight\", "}),
    [](const auto& test) { return test.param.name; });

TEST_F(RecordingTest, TagsAreNumberedAcrossTheTreeAndSkippedOnesTakeNoNumber) {
  BaseObject* a = Object("A");
  BaseObject* a1 = Object("A1", a);
  BaseObject* b = Object("B");
  BaseMaterial* wood = Material("Wood");
  Texture(b, wood);
  Texture(a1, wood);
  Tag(a, Tphong);
  Tag(a, 1011012);
  Texture(a, wood);
  OnlyOptions({Option::Materials});
  Record("S");
  EXPECT_EQ(Part(0, kTags),
            "0 {50000 ->Wood, 40000 ->tag 5616 of A}\n1 #1{50000 ->Wood, 40000 ->tag 5616 of A1}\n"
            "2 #2{50000 ->Wood, 40000 ->tag 5616 of B}\n");
  EXPECT_EQ(Part(0, kObjects), "") << "the walk goes on without recording objects";
}

TEST_F(RecordingTest, ACompositingTagGivesFiftyKeysAndItsLink) {
  BaseTag* tag = Tag(Object("Cube"), Tcompositing);
  BaseContainer* data = tag->GetDataInstance();
  data->FlushAll();
  data->SetLong(1000, 5);
  data->SetReal(1151, 0.25);
  data->SetLong(1006, 7);
  data->SetReal(1110, 3.75);
  data->SetString(1126, "list");
  data->SetReal(1128, 2.5);
  Record("A");
  BaseContainer record = Element(0).GetContainer(kTags).GetContainer(0);
  EXPECT_EQ(record.GetCount(), 51);
  EXPECT_EQ(record.GetIndexId(50), kTagLink);
  for (const LONG unused : {60015, 60016}) EXPECT_EQ(record.FindIndex(unused), NOTOK);
  const auto text = [&record](LONG key) {
    BaseContainer one;
    one.SetData(key, record.GetData(key));
    return tests::ContainerText(one, nullptr);
  };
  EXPECT_EQ(text(60000), "{60000 1}") << "a switch becomes 0 or 1";
  EXPECT_EQ(text(60001), "{60001 0}") << "a missing one is off";
  EXPECT_EQ(text(60047), "{60047 real 0.25}");
  EXPECT_EQ(text(60012), "{60012 7}");
  EXPECT_EQ(text(60031), "{60031 3}") << "a whole number is read as one";
  EXPECT_EQ(text(60005), "{60005 \"list\"}");
  EXPECT_EQ(text(60007), "{60007 \"list\"}") << "a failed read repeats the value before";
  EXPECT_EQ(text(60009), "{60009 real 2.5}");
  EXPECT_EQ(text(60044), "{60044 real 2.5}");
}

// The numbers by heart: scene files hold them. Each parameter alone is not 0, so that one that is
// recorded under another's key is seen; B: a switch, L: a whole number, R, P: as it is.
TEST_F(RecordingTest, EachCompositingParameterHasItsKey) {
  struct Row {
    LONG parameter;
    LONG key;
  };
  constexpr Row kRows[] = {
      {1000, 60000}, {1001, 60001}, {1002, 60002}, {1003, 60003}, {1017, 60004}, {1004, 60006},
      {1005, 60011}, {1006, 60012}, {1007, 60013}, {1016, 60014}, {1158, 60045}, {1151, 60047},
      {1150, 60046}, {1152, 60048}, {1154, 60049}, {1155, 60050}, {1156, 60051}, {1010, 60019},
      {1011, 60020}, {1012, 60021}, {1013, 60022}, {1014, 60023}, {1015, 60024}, {1136, 60025},
      {1137, 60026}, {1138, 60027}, {1139, 60028}, {1140, 60029}, {1141, 60030}, {1110, 60031},
      {1111, 60032}, {1112, 60033}, {1113, 60034}, {1114, 60035}, {1115, 60036}, {1120, 60037},
      {1121, 60038}, {1122, 60039}, {1123, 60040}, {1124, 60041}, {1125, 60042}, {1126, 60005},
      {1127, 60007}, {1129, 60008}, {1128, 60009}, {1142, 60010}, {1143, 60017}, {1144, 60018},
      {1131, 60043}, {1130, 60044}};
  const std::string kinds = "BBBBBBBLLRBRRRBBBBBBBBBBBBBBBLLLLLLLLLLLLPPPPPPPPP";
  ASSERT_EQ(std::size(kRows), kinds.size());
  BaseContainer& data = *Tag(Object("Cube"), Tcompositing)->GetDataInstance();
  OnlyOptions({Option::CompositingTags});
  for (std::size_t i = 0; i < kinds.size(); ++i) {
    data.FlushAll();
    std::string meant = "0 {";
    for (const Row& row : kRows) {
      const bool isSet = &row == &kRows[i];
      isSet ? data.SetReal(row.parameter, row.parameter + 0.5) : data.SetLong(row.parameter, 0);
      const char kind = kinds[static_cast<std::size_t>(&row - kRows)];
      const std::string whole = std::to_string(row.parameter);
      meant += std::to_string(row.key) +
               (isSet || kind == 'R' ? kind == 'B'   ? " 1"
                                       : kind == 'L' ? " " + whole
                                       : isSet       ? " real " + whole + ".5"
                                                     : " real 0"
                                     : " 0") +
               ", ";
    }
    Record("A");
    EXPECT_EQ(Part(0, kTags), meant + "40000 ->tag 5637 of Cube}\n") << kRows[i].parameter;
    Answer(true);
  }
}

TEST_F(RecordingTest, TheFirstUnreadableParameterIsNil) {
  Tag(Object("Cube"), Tcompositing)->GetDataInstance()->FlushAll();
  Record("A");
  const BaseContainer record = Element(0).GetContainer(kTags).GetContainer(0);
  EXPECT_EQ(record.GetType(60005), DA_NIL);
  EXPECT_NE(record.FindIndex(60005), NOTOK) << "nil is an entry";
}

TEST_F(RecordingTest, WithoutARenderCameraTheLinkIsEmpty) {
  Object("Eye", nullptr, Ocamera);
  Record("A");
  EXPECT_EQ(Part(0, kCamera), "70000 ->nothing\n");
}

TEST_F(RecordingTest, RecordingLeavesNoUndo) {
  Object("Cube");
  Record("A");
  EXPECT_FALSE(Undo());
}

TEST_F(RecordingTest, AChainOfAHundredThousandChildrenIsRecordedAndRecalled) {
  BaseObject* object = nullptr;
  LayerObject* layer = nullptr;
  constexpr LONG kDepth = 100000;
  for (LONG i = 0; i < kDepth; ++i) {
    object = Object("o", object);
    layer = Layer("l", layer);
  }
  Record("A");
  SetSwitches(object, MODE_OFF, MODE_OFF, FALSE);
  Load("A");
  EXPECT_EQ(Element(0).GetContainer(kObjects).GetCount(), kDepth);
  EXPECT_EQ(Element(0).GetContainer(kLayers).GetCount(), kDepth);
  EXPECT_EQ(Switches(object), "2 2 1");
}

TEST_F(RecordingTest, APreviewNeedsASavedDocument) {
  Tick(kGeneratePreview, true);
  EXPECT_TRUE(Record("A"));
  const std::string said = Transcript();
  EXPECT_NE(said.find("status: Stagemarks - Generating Preview Image\n"
                      "tell: You must save your document before you can generate preview "
                      "images.\nstatus cleared\n"),
            std::string::npos)
      << said;
  EXPECT_EQ(Rows(), "[ ] * A\n");
}

}  // namespace
}  // namespace stagemarks
