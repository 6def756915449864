// Where elements lie in a document, and how their IDs and names are found.
#include "tests/source/StageTest.h"

namespace stagemarks {
namespace {

TEST_F(StageTest, AnElementIsWrittenInTheOrderOfItsKeys) {
  BaseObject* cube = Object("Cube", nullptr, Ocube);
  SetSwitches(cube, MODE_OFF, MODE_ON, FALSE);
  Texture(cube, Material("Brick"));
  Doc().GetRenderBaseDraw()->SetSceneCamera(Object("Eye", nullptr, Ocamera), FALSE);
  Layer("Set");
  Record("Opening");
  EXPECT_EQ(StoreText(kRecordStore),
            "0 {20000 \"Opening\", 25000 {25000 ->Opening}, "
            "25003 {0 {80000 ->Set, 80001 0, 80002 1, 80003 1, 80004 1, 80005 0, 80006 1, 80007 1, "
            "80008 1, 80009 1}}, "
            "25004 {70000 ->Eye}, "
            "25005 {0 {30000 ->Cube, 30001 1, 30002 0, 30003 0}, 1 #1{30000 ->Eye, 30001 2, 30002 "
            "2, 30003 1}}, "
            "25006 {0 {50000 ->Brick, 40000 ->tag 5616 of Cube}}, "
            "20002 {25008 2011, 25009 3, 25010 5, 25011 14, 25012 7, 25013 59}}\n");
  EXPECT_EQ(StoreText(kListStore),
            "0 {20000 \"Opening\", 20002 {25008 2011, 25009 3, 25010 5, 25011 14, 25012 7, 25013 "
            "59}, 25007 1}\n20003 1\n");
  EXPECT_TRUE(Doc().GetChanged());
}

TEST_F(StageTest, AnUnusedDocumentStaysWithoutStores) {
  Object("Cube");
  host::EventAdd();
  Deliver();
  EXPECT_FALSE(HasStore(kRecordStore));
  EXPECT_FALSE(HasStore(kListStore));
  EXPECT_FALSE(HasStore(kPreferences));
  EXPECT_EQ(Rows(), "");
}

TEST_F(StageTest, NamesAreNeeded) {
  Type(kNameField, "");
  EXPECT_TRUE(Press(kRecord));
  EXPECT_EQ(Transcript(), "tell: You must enter a name for this element.\n");
  EXPECT_FALSE(HasStore(kRecordStore));
  EXPECT_FALSE(HasStore(kPreferences));
}

TEST_F(StageTest, RecordingTellsWhatItSaves) {
  Record("A");
  EXPECT_EQ(
      Transcript(),
      "status: Stagemarks - Saving Render Settings\nstatus: Stagemarks - Saving Object and Tag "
      "Settings\n"
      "status: Stagemarks - Saving Camera Settings\nstatus: Stagemarks - Saving Layer Settings\n"
      "status: Stagemarks - Saving Date and Time\nstatus cleared\n");
  OnlyOptions({});
  Record("B");
  EXPECT_EQ(Transcript(),
            "status: Stagemarks - Saving Object and Tag Settings\nstatus: Stagemarks - Saving Date "
            "and Time\nstatus cleared\n");
}

TEST_F(StageTest, OverwritingKeepsTheIdAndReplacesRecordAndEntry) {
  BaseObject* cube = Object("Cube");
  Record("A");
  Record("B");
  Check("A");
  SetSwitches(cube, MODE_OFF, MODE_OFF, FALSE);
  Transcript();
  Answer(true);
  EXPECT_TRUE(Record("A"));
  EXPECT_EQ(
      Transcript().substr(0, 86),
      "ask: An element with that name already exists.  Do you want to overwrite it? -> yes\nst");
  EXPECT_EQ(Part(0, kObjects), "0 {30000 ->Cube, 30001 1, 30002 1, 30003 0}\n");
  EXPECT_EQ(Rows(), "[ ] * A\n[ ] B\n") << "the check mark goes with the deleted row";
  EXPECT_EQ(SettingsText(), "* Render Settings 1280\n  A 1280\n  B 1280\n")
      << "the old copy of the render settings is freed";
}

TEST_F(StageTest, DecliningToOverwriteChangesNothing) {
  Object("Cube");
  Record("A");
  const BaseContainer before = *Doc().GetDataInstance();
  Answer(false);
  EXPECT_FALSE(Record("A"));
  EXPECT_EQ(*Doc().GetDataInstance(), before);
}

TEST_F(StageTest, FreedIdsAreHandedOutAgain) {
  for (const CHAR* name : {"A", "B", "C"}) Record(name);
  Answer(true);
  Delete("B");
  Record("D");
  Record("E");
  EXPECT_EQ(Element(1).GetString(kName), String("D"));
  EXPECT_EQ(Element(3).GetString(kName), String("E"));
  EXPECT_EQ(Rows(), "[ ] A\n[ ] C\n[ ] D\n[ ] * E\n");
}

// Takes an element out of both stores as a whole, as only an edit from outside can.
void TakeOut(BaseDocument& doc, LONG element) {
  for (const LONG store : {kRecordStore, kListStore})
    doc.GetDataInstance()->GetContainerInstance(store)->RemoveData(element);
}

TEST_F(StageTest, AnElementWhoseIdIsNotBelowTheCountIsNotFound) {
  for (const CHAR* name : {"A", "B", "C"}) Record(name);
  TakeOut(Doc(), 1);
  host::EventAdd();
  Deliver();
  ASSERT_EQ(Rows(), "[ ] A\n[ ] * C\n");
  Transcript();
  EXPECT_TRUE(Record("C")) << "no question: the name is not found";
  EXPECT_EQ(Transcript().find("ask:"), std::string::npos);
  EXPECT_EQ(Rows(), "[ ] A\n[ ] C\n[ ] * C\n");
  EXPECT_EQ(Element(1).GetString(kName), String("C"));
}

TEST_F(StageTest, AnUnknownNameStandsForElementZero) {
  BaseObject* cube = Object("Cube");
  Record("A");
  Record("B");
  Record("C");
  TakeOut(Doc(), 1);
  host::EventAdd();
  Deliver();
  Load("C");
  EXPECT_EQ(Rows(), "[ ] * A\n[ ] C\n");
  EXPECT_EQ(Switches(cube), "2 2 1");
}

TEST_F(StageTest, ListEntriesAreBuiltOnceFromTheRecords) {
  for (const CHAR* name : {"A", "B", "C"}) Record(name);
  BaseContainer* data = Doc().GetDataInstance();
  data->GetContainerInstance(kRecordStore)->GetContainerInstance(1)->FlushAll();
  BaseContainer kept = data->GetContainer(kListStore);
  kept.RemoveData(kListBuilt);
  kept.RemoveData(0);
  kept.RemoveData(1);
  kept.GetContainerInstance(2)->SetString(kName, "stale");
  data->SetContainer(kListStore, kept);
  host::EventAdd();
  Deliver();
  const std::string date = "{25008 2011, 25009 3, 25010 5, 25011 14, 25012 7, 25013 59}";
  EXPECT_EQ(StoreText(kListStore), "2 #2{20000 \"C\", 20002 " + date +
                                       ", 25007 1}\n0 {20000 \"A\", 20002 " + date +
                                       "}\n1 #1{}\n20003 1\n");
  EXPECT_EQ(Rows(), "[ ] A\n[ ] * C\n");
}

TEST_F(StageTest, TheCurrentFlagLeavesEmptiedEntriesEmpty) {
  Record("A");
  Record("B");
  Answer(true);
  Delete("A");
  Load("B");
  EXPECT_EQ(tests::ContainerText(Store(kListStore).GetContainer(0), &Doc()), "{}");
  Record("C");
  EXPECT_EQ(Element(0).GetString(kName), String("C")) << "the emptied ID is free";
}

TEST_F(StageTest, StoresFollowTheActiveDocument) {
  BaseDocument* first = &Doc();
  Record("A");
  BaseDocument* second = App().NewDocument();
  SetActiveDocument(second);
  Deliver();
  EXPECT_EQ(Rows(), "");
  Record("B");
  EXPECT_EQ(Rows(), "[ ] * B\n");
  EXPECT_EQ(Element(0).GetString(kName), String("B"));
  SetActiveDocument(first);
  Deliver();
  EXPECT_EQ(Rows(), "[ ] * A\n");
}

TEST_F(StageTest, WithoutADocumentEveryEventIsRefused) {
  BaseDocument* doc = &Doc();
  Record("A");
  KillDocument(doc);
  while (BaseDocument* other = GetActiveDocument()) KillDocument(other);
  Deliver();
  for (const LONG button : {kLoad, kDelete, kRename, kRecord, kGenerateFiles})
    EXPECT_FALSE(Press(button)) << button;
  for (const LONG entry : {kCheckAll, kUpdateChecked, kDeleteAll, kSaveDefaults, kHelp, kAbout})
    EXPECT_FALSE(Menu(entry)) << entry;
}

TEST_F(StageTest, ElementsAreSavedWithTheScene) {
  BaseObject* cube = Object("Cube");
  Record("A");
  SetSwitches(cube, MODE_OFF, MODE_OFF, FALSE);
  Record("B");
  SaveAs("scene.c4d");
  const std::string saved = StoreText(kRecordStore);
  const engine::Result<BaseDocument*> opened = App().OpenDocument(Folder() + "/scene.c4d");
  ASSERT_TRUE(opened.Ok()) << opened.Message();
  Deliver();
  EXPECT_EQ(StoreText(kRecordStore), saved);
  EXPECT_EQ(Rows(), "[ ] A\n[ ] * B\n");
  Load("A");
  EXPECT_EQ(Switches(opened.Value()->GetFirstObject()), "2 2 1");
}

}  // namespace
}  // namespace stagemarks
