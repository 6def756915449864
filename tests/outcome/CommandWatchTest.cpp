// Reports after each command of the dialog: with the loaded plug-in, which itself says
// nothing about most of it.
#include "program/outcome/CommandWatch.h"

#include <filesystem>
#include <functional>

#include "tests/source/StageTest.h"
#include "tests/support/ScratchFolder.h"

namespace stagemarks {
namespace {

namespace fs = std::filesystem;

class CommandWatchTest : public StageTest {
 protected:
  // The report after the button of that label: the summary and the problems, a line each.
  std::string After(const char* label, const std::function<bool()>& act) {
    outcome::CommandWatch watch(Services().Get(), Dialog(), label);
    watch.ChoseFolder(folder_);
    watch.Lacks(lacking_);
    const outcome::Outcome outcome = watch.Finish(act());
    std::string text = outcome.summary + "\n";
    for (const std::string& problem : outcome.problems) text += "! " + problem + "\n";
    return text;
  }
  std::string Recorded(const char* name) {
    Type(kNameField, name);
    return After("Record Element", [this] { return Press(kRecord); });
  }
  std::string Chosen(const char* label, LONG entry) {
    return After(label, [this, entry] { return Menu(entry); });
  }

  std::string folder_;
  std::vector<std::string> lacking_;  // textures
};

TEST_F(CommandWatchTest, ARecordingTellsOfItsPreview) {
  EXPECT_EQ(Recorded("A"), "Recorded \"A\".\n");
  EXPECT_EQ(Recorded(""), "\n") << "the dialog has said what is missing";
  EXPECT_EQ(Recorded("A"), "\n") << "not to be recorded over";
  PretendSaved("shot.c4d");
  Tick(kGeneratePreview, true);
  EXPECT_EQ(Recorded("B"), "Recorded \"B\", with preview.\n");
  Answer(true);
  EXPECT_EQ(Recorded("B"), "Recorded \"B\" anew, with preview.\n");
  EXPECT_EQ(Recorded("/B"),
            "Recorded \"/B\".\n"
            "! The preview of \"/B\" was not written.\n"
            "! The name cannot be the name of a file.\n");
  Tick(kGeneratePreview, false);
  Answer(true);
  EXPECT_EQ(Recorded("B"), "Recorded \"B\" anew; its old preview is gone.\n");
}

TEST_F(CommandWatchTest, AFullDiskIsToldWithTheFile) {
  PretendSaved("shot.c4d");
  Tick(kGeneratePreview, true);
  Services().files.BreakFrom(1, engine::Operation::ReplaceFile);
  const std::string said = Recorded("A");
  EXPECT_EQ(said.find("Recorded \"A\".\n! The preview of \"A\" was not written.\n! "), 0U) << said;
  EXPECT_NE(said.find("A.tif"), std::string::npos) << said;
}

TEST_F(CommandWatchTest, LoadingRenamingAndDeletingNameTheStagemark) {
  for (const char* name : {"A", "B", "C"}) Record(name);
  const auto load = [this] { return Press(kLoad); };
  SelectRows({"A"});
  EXPECT_EQ(After("Load", load), "Loaded \"A\".\n");
  SelectRows({"A", "B"});
  EXPECT_EQ(After("Load", load), "Nothing was done: select exactly one Stagemark in the list.\n");
  SelectRows({"A"});
  Type(kNameField, "Z");
  EXPECT_EQ(After("Rename", [this] { return Press(kRename); }), "Renamed \"A\" to \"Z\".\n");
  SelectRows({"B"});
  EXPECT_EQ(After("Delete", [this] { return Press(kDelete); }), "\n") << "called off";
  Answer(true);
  SelectRows({"B"});
  EXPECT_EQ(After("Delete", [this] { return Press(kDelete); }), "Deleted \"B\".\n");
  EXPECT_EQ(Chosen("Delete Checked Elements", kDeleteChecked),
            "Nothing was done: check the Stagemarks that are meant.\n");
  Menu(kCheckAll);
  EXPECT_EQ(Chosen("Delete Checked Elements", kDeleteChecked),
            "Deleted 2 Stagemarks: \"C\" and \"Z\".\n");
  EXPECT_EQ(Chosen("Delete All Elements", kDeleteAll), "There are no Stagemarks in this scene.\n");
}

TEST_F(CommandWatchTest, BulkEditsTellWhatTheyChangedOrWhatTheyLack) {
  BaseObject* lamp = Object("Lamp");
  Material("Unused");
  LayerObject* layer = Layer("Props");
  Record("A");
  const char* objects = "Set Selected Objects on Checked Elements";
  const char* layers = "Set Selected Layers on Checked Elements";
  EXPECT_EQ(Chosen(objects, kSetObjects),
            "Nothing was done: check the Stagemarks that are meant.\n");
  Check("A");
  EXPECT_EQ(Chosen(objects, kSetObjects), "Nothing was changed: select an object first.\n");
  EXPECT_EQ(Chosen(layers, kSetLayers), "Nothing was changed: select a layer first.\n");
  Doc().SetActiveObject(lamp);
  lamp->SetRenderMode(MODE_OFF);
  EXPECT_EQ(Chosen(objects, kSetObjects), "Wrote the switches of \"Lamp\" into \"A\".\n");
  EXPECT_EQ(Chosen(objects, kSetObjects),
            "Nothing changed: \"A\" had the switches of \"Lamp\" already.\n");
  layer->SetAllBits(layer->GetAllBits() | BIT_ACTIVE);
  EXPECT_EQ(Chosen(layers, kSetLayers),
            "Nothing changed: \"A\" had the switches of \"Props\" already.\n");
  EXPECT_EQ(Chosen("Set Render Camera on Checked Elements", kSetCamera), "\n")
      << "the dialog has said that it needs a camera";
  EXPECT_EQ(Chosen("Update Checked Elements", kUpdateChecked),
            "Nothing in the scene was new to \"A\".\n");
  EXPECT_EQ(Chosen("Clean Material Editor", kCleanMaterials), "Deleted 1 material: \"Unused\".\n");
  EXPECT_EQ(Chosen("Save As Default Preferences", kSaveDefaults),
            "Kept these options as your defaults.\n");
}

TEST_F(CommandWatchTest, AnExportCountsItsFilesAndNamesWhatIsMissing) {
  PretendSaved("shot.c4d");
  for (const char* name : {"A", "B", "C"}) Record(name);
  Menu(kCheckAll);
  const auto exported = [this] {
    return After("Generate .C4D Files", [this] { return Press(kGenerateFiles); });
  };
  EXPECT_EQ(exported(), "\n") << "called off";
  folder_ = Folder() + "/out";
  fs::create_directory(folder_);
  Person().ChooseNext(folder_);
  EXPECT_EQ(exported(), "Exported 3 scene files into \"" + folder_ + "\".\n");
  lacking_ = {"wood.png"};
  Person().ChooseNext(folder_);
  EXPECT_EQ(exported(), "Not everything was exported: 3 scene files of 3 in \"" + folder_ +
                            "\".\n! The texture \"wood.png\" was found nowhere.\n");
  lacking_.clear();
  Person().ChooseNext(folder_);
  fs::remove_all(folder_ + "/shot B");
  tests::WriteText(folder_ + "/shot B", "a file in the way");
  const std::string said = exported();
  EXPECT_EQ(said.find("Not everything was exported: 1 scene file of 3 in \"" + folder_ + "\".\n! "),
            0U)
      << said;
  EXPECT_NE(said.find("shot B"), std::string::npos) << said;
  EXPECT_NE(said.find("! The copy of the scene that was being exported stays open.\n"),
            std::string::npos)
      << said;
}

TEST_F(CommandWatchTest, SavingElsewhereTellsWhatWasTakenAlong) {
  SaveAs("one.c4d");
  Tick(kGeneratePreview, true);
  Record("A");
  Record("B");
  const auto saved = [this](const char* name) {
    const std::string former = Folder() + "/one.c4d";
    Doc().SetDocumentName(Filename("one.c4d"));
    const std::size_t mark = Services().ledger.Mark();
    SaveAs(name);
    const outcome::Outcome said =
        outcome::OfSaving(Services().Get(), mark, former, Folder() + "/" + name);
    return said.summary + (said.problems.empty() ? "" : "\n" + said.problems.front());
  };
  EXPECT_EQ(saved("one.c4d"), "Saved \"one.c4d\".");
  EXPECT_EQ(saved("two.c4d"), "Saved \"two.c4d\" with 2 preview images.");
  EXPECT_EQ(saved("two.c4d"), "Saved \"two.c4d\".\nThe preview images in \"" + Folder() +
                                  "/one_SM\" were not taken along.")
      << "the question about the folder that is there was answered no";
}

}  // namespace
}  // namespace stagemarks
