// Deleting elements, with what each owns outside its record, and deleting what no element needs.
#include <filesystem>

#include "engine/scene/DocumentState.h"
#include "tests/source/StageTest.h"
#include "tests/support/ScratchFolder.h"

namespace stagemarks {
namespace {

namespace fs = std::filesystem;

class DeletionTest : public StageTest {
 protected:
  // Three elements in a scene that counts as saved, each with a file for a preview.
  void RecordThree() {
    PretendSaved("shot.c4d");
    fs::create_directory(Folder() + "/shot_SM");
    for (const CHAR* name : {"A", "B", "C"}) {
      Record(name);
      tests::WriteText(Folder() + "/shot_SM/" + name + ".tif", name);
    }
    Transcript();
  }
  std::string Previews() const { return tests::Names(Folder() + "/shot_SM"); }
  std::string Question() const {
    return "ask: Delete Bitmap Preview Folder " + Folder() + "/shot_SM ? -> ";
  }
};

TEST_F(DeletionTest, EmptiesRecordAndEntryInPlaceAndFreesTheSettings) {
  RecordThree();
  Answer(true);
  Delete("B");
  EXPECT_EQ(Transcript(),
            "ask: Are you sure you want to delete this element?  This cannot be undone. -> yes\n");
  EXPECT_EQ(tests::ContainerText(Element(1), &Doc()), "#1{}");
  EXPECT_EQ(tests::ContainerText(Store(kListStore).GetContainer(1), &Doc()), "#1{}");
  EXPECT_EQ(Rows(), "[ ] A\n[ ] * C\n");
  EXPECT_EQ(Previews(), "A.tif C.tif");
  EXPECT_EQ(SettingsText(), "* Render Settings 1280\n  C 1280\n  A 1280\n");
  Record("D");
  EXPECT_EQ(Element(1).GetString(kName), String("D"));
}

TEST_F(DeletionTest, DecliningDeletesNothing) {
  RecordThree();
  const std::string before = StoreText(kRecordStore) + StoreText(kListStore);
  Answer(false);
  Delete("B");
  EXPECT_EQ(StoreText(kRecordStore) + StoreText(kListStore), before);
  EXPECT_EQ(Previews(), "A.tif B.tif C.tif");
}

TEST_F(DeletionTest, CheckedOnesGoWithoutAQuestionAndTheOthersKeepTheirMarks) {
  RecordThree();
  Check("A");
  Check("C");
  Menu(kDeleteChecked);
  EXPECT_EQ(Transcript(), "");
  EXPECT_EQ(Rows(), "[ ] B\n");
  EXPECT_EQ(Previews(), "B.tif");
  EXPECT_EQ(SettingsText(), "* Render Settings 1280\n  B 1280\n");
  Check("B");
  engine::ClearChanged(Doc());
  Menu(kUncheckAll);
  Menu(kDeleteChecked);
  EXPECT_TRUE(Doc().GetChanged());
  EXPECT_EQ(Rows(), "[ ] B\n");
}

TEST_F(DeletionTest, TwoElementsOfOneNameGoWithTwoRows) {
  RecordThree();
  for (const LONG store : {kRecordStore, kListStore}) {
    Doc().GetDataInstance()->GetContainerInstance(store)->GetContainerInstance(2)->SetString(kName,
                                                                                             "A");
  }
  EventAdd();
  Deliver();
  EXPECT_EQ(Rows(), "[ ] A\n[ ] * A\n[ ] B\n");
  engine::ToggleLine(Dialog(), kList, 0, kColumnChecked);
  engine::ToggleLine(Dialog(), kList, 1, kColumnChecked);
  Menu(kDeleteChecked);
  EXPECT_EQ(Rows(), "[ ] B\n");
}

// Without a list store no name is found, and the first one means element 0; building the list comes
// after it.
TEST_F(DeletionTest, TheFirstDeletionBuildsAListThatWasNeverBuilt) {
  for (const CHAR* name : {"Z", "A", "M"}) Record(name);
  Check("A");
  Check("M");
  Doc().GetDataInstance()->RemoveData(kListStore);
  Menu(kDeleteChecked);
  EXPECT_EQ(Rows(), "[x] A\n");
  EXPECT_EQ(Element(0).GetCount(), 0);
  EXPECT_EQ(Element(2).GetCount(), 0);
}

TEST_F(DeletionTest, DeletingAllLeavesNoStoreAndAsksAboutTheFolderOnly) {
  RecordThree();
  tests::WriteText(Folder() + "/shot_SM/Other.tif", "");
  Answer(false);
  Menu(kDeleteAll);
  EXPECT_EQ(Transcript(), Question() + "no\n");
  EXPECT_FALSE(HasStore(kRecordStore));
  EXPECT_FALSE(HasStore(kListStore));
  EXPECT_TRUE(HasStore(kPreferences));
  EXPECT_EQ(Rows(), "");
  EXPECT_EQ(SettingsText(), "* Render Settings 1280\n");
  EXPECT_EQ(Previews(), "Other.tif");
  // Without elements the question comes all the same, as long as there is a folder.
  Answer(true);
  Menu(kDeleteAll);
  Menu(kDeleteAll);
  EXPECT_EQ(Transcript(), Question() + "yes\n");
  EXPECT_FALSE(fs::exists(Folder() + "/shot_SM"));
  EXPECT_FALSE(HasStore(kListStore));
}

TEST_F(DeletionTest, OfALinkedSideFolderOnlyTheLinkGoes) {
  PretendSaved("shot.c4d");
  Record("A");
  fs::create_directories(Folder() + "/elsewhere/deep");
  tests::WriteText(Folder() + "/elsewhere/deep/kept.tif", "kept");
  fs::create_directory_symlink(Folder() + "/elsewhere", Folder() + "/shot_SM");
  Answer(true);
  Menu(kDeleteAll);
  EXPECT_FALSE(fs::exists(fs::symlink_status(Folder() + "/shot_SM")));
  EXPECT_EQ(tests::ReadText(Folder() + "/elsewhere/deep/kept.tif"), "kept");
}

TEST_F(DeletionTest, AnUnsavedDocumentHasNoSideFolder) {
  Record("A");
  Transcript();
  Menu(kDeleteAll);
  EXPECT_EQ(Transcript(), "");
}

class CleanMaterialsTest : public DeletionTest {
 protected:
  std::string Materials() const {
    std::string names;
    for (const BaseMaterial* one = Doc().GetFirstMaterial(); one; one = one->GetNext())
      names += one->GetName().ToUtf8() + " ";
    return names;
  }
};

TEST_F(CleanMaterialsTest, KeepsWhatARecordedTextureTagUsesAndComesBackWithOneUndo) {
  BaseObject* object = Object("O");
  BaseMaterial* first = Material("First");
  TextureTag* tag = Texture(object, first);
  TextureTag* gone = Texture(object, Material("OfADeletedTag"));
  Record("A");
  tag->SetMaterial(Material("Second"));
  Record("B");
  Texture(object, Material("UsedButNotRecorded"));
  Material("Idle");
  BaseTag* removed = gone;
  BaseTag::Free(removed);
  Menu(kCleanMaterials);
  EXPECT_EQ(Materials(), "First Second ");
  EXPECT_TRUE(Undo());
  EXPECT_EQ(Materials(), "First OfADeletedTag Second UsedButNotRecorded Idle ");
  EXPECT_EQ(static_cast<TextureTag*>(object->GetTag(Ttexture))->GetMaterial()->GetName(),
            String("Second"));
  EXPECT_TRUE(Redo());
  EXPECT_EQ(Materials(), "First Second ");
}

TEST_F(CleanMaterialsTest, ElementsWithoutTextureTagsUseNothing) {
  OnlyOptions({});
  Texture(Object("O"), Material("M"));
  Record("A");
  Menu(kCleanMaterials);
  EXPECT_EQ(Materials(), "");
}

TEST_F(CleanMaterialsTest, WithoutElementsNothingIsDeleted) {
  Material("M");
  Menu(kCleanMaterials);
  EXPECT_EQ(Materials(), "M ");
  Record("A");
  Answer(true);
  Delete("A");
  engine::ClearChanged(Doc());
  Menu(kCleanMaterials);
  EXPECT_EQ(Materials(), "M ");
  EXPECT_FALSE(Doc().GetChanged());
}

TEST_F(CleanMaterialsTest, TagRecordsAreLookedUpUnderTheirPositions) {
  Texture(Object("O"), Material("M"));
  Texture(Object("P"), Material("N"));
  Record("A");
  BaseContainer* tags = Doc()
                            .GetDataInstance()
                            ->GetContainerInstance(kRecordStore)
                            ->GetContainerInstance(0)
                            ->GetContainerInstance(kTags);
  tags->RemoveData(0);
  Menu(kCleanMaterials);
  // One record is left, under 1; only what lies under 0 counts.
  EXPECT_EQ(Materials(), "");
}

}  // namespace
}  // namespace stagemarks
