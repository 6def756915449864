// Undo and trash of the programs for the dialog's commands: with the loaded plug-in, compared by
// the whole document and all preview files.
#include "program/pictures/UndoableCommand.h"

#include <filesystem>
#include <functional>
#include <set>

#include "engine/scene/SceneDump.h"
#include "engine/scenefile/SceneFile.h"
#include "engine/states/StoredStates.h"
#include "engine/states/Trash.h"
#include "engine/undo/Undo.h"
#include "tests/source/StageTest.h"
#include "tests/support/SceneBytes.h"
#include "tests/support/ScratchFolder.h"

namespace stagemarks {
namespace {

namespace fs = std::filesystem;

class UndoableCommandTest : public StageTest {
 protected:
  UndoableCommandTest() {
    lamp_ = Object("Lamp");
    camera_ = Object("Eye", nullptr, Ocamera);
    layer_ = Layer("Props");
    Texture(lamp_, Material("Red"));
    PretendSaved("shot.c4d");
    Tick(kGeneratePreview, true);
    Person().AnswerOthers(true);
  }

  // As the programs call the plug-in.
  void Do(const char* label, const std::function<void()>& act) {
    const pictures::UndoableCommand step(Services().Get(), Dialog(), label);
    act();
  }
  void RecordIt(const std::string& name) {
    Type(kNameField, name);
    Do("Record Element", [&] { Press(kRecord); });
  }
  void DeleteIt(const std::string& name) {
    SelectRows({name});
    Do("Delete", [this] { Press(kDelete); });
  }
  void RenameIt(const std::string& name, const std::string& to) {
    SelectRows({name});
    Type(kNameField, to);
    Do("Rename", [this] { Press(kRename); });
  }

  // The document and the names and contents of all previews.
  std::string Everything() {
    std::string text = engine::DumpDocument(Doc());
    const fs::path folder = Folder() + "/shot_SM";
    std::set<fs::path> files;
    if (fs::exists(folder)) files.insert(fs::directory_iterator(folder), {});
    for (const fs::path& file : files)
      text += file.filename().string() + " " +
              std::to_string(std::hash<std::string>()(tests::ReadText(file))) + "\n";
    return text;
  }
  using Lines = std::vector<std::string>;
  // But for what the acts leave alone: the switches of the scene, and a mark of the layers that
  // loading sets for ever.
  static Lines Differences(const std::string& a, const std::string& b) {
    Lines lines = engine::DumpDifference(a, b);
    std::erase_if(lines, [](const std::string& line) {
      return line.find(" modes ") != std::string::npos || line.find(" nbits ") != std::string::npos;
    });
    return lines;
  }
  // "name reason|..." of what is in the trash.
  std::string Trash() const {
    std::string text;
    for (const engine::DeletedState& state : engine::DeletedStatesOf(Doc()))
      text += state.name + (state.overwritten ? " over|" : " deleted|");
    return text;
  }

  BaseObject* lamp_;
  BaseObject* camera_;
  LayerObject* layer_;
};

TEST_F(UndoableCommandTest, EveryCommandIsOneStepWithItsName) {
  for (const char* name : {"A", "B"}) RecordIt(name);
  SetSwitches(lamp_, MODE_OFF, MODE_OFF, FALSE);
  Object("New");
  layer_->SetBit(BIT_ACTIVE);
  Doc().SetActiveObject(lamp_, SELECTION_NEW);
  lamp_->GetFirstTag()->SetBit(BIT_ACTIVE);
  const auto checkA = [this] {
    if (Rows().find("[x]") == std::string::npos) Check("A");
  };
  const struct {
    const char* label;
    std::function<void()> act;
  } commands[] = {
      {"Record Element", [this] { Press(kRecord); }},
      {"Load", [this] { Load("A"); }},
      {"Update Checked Elements", [this] { Menu(kUpdateChecked); }},
      {"Set Selected Objects on Checked Elements", [this] { Menu(kSetObjects); }},
      {"Set Selected Tags on Checked Elements", [this] { Menu(kSetTags); }},
      {"Set Selected Layers on Checked Elements", [this] { Menu(kSetLayers); }},
      {"Set Render Camera on Checked Elements", [this] { Menu(kSetCamera); }},
      {"Rename", [this] { Press(kRename); }},
      {"Delete", [this] { Press(kDelete); }},
      {"Delete Checked Elements", [this] { Menu(kDeleteChecked); }},
      {"Delete All Elements", [this] { Menu(kDeleteAll); }},
  };
  for (const auto& command : commands) {
    checkA();
    if (command.label == std::string("Set Selected Tags on Checked Elements")) {
      Doc().GetFirstMaterial()->SetName("Green");
      static_cast<TextureTag*>(lamp_->GetFirstTag())->SetMaterial(Material("Blue"));
    }
    if (command.label == std::string("Set Selected Layers on Checked Elements")) {
      LayerData flags = layer_->GetLayerData(&Doc());
      flags.solo = !flags.solo;
      layer_->SetLayerData(&Doc(), flags);
    }
    if (command.label == std::string("Set Render Camera on Checked Elements"))
      Doc().SetActiveObject(camera_, SELECTION_NEW);
    SelectRows({"A"});
    Type(kNameField, command.label == std::string("Rename") ? "A2" : "A");
    const std::string before = Everything();
    const std::size_t steps = engine::DoneNames(Doc()).size();
    Do(command.label, command.act);
    const std::string after = Everything();
    EXPECT_NE(Differences(before, after), Lines()) << command.label;
    EXPECT_EQ(engine::DoneNames(Doc()).size(), steps + 1) << command.label;
    EXPECT_EQ(engine::UndoName(Doc()), command.label);
    for (int round = 0; round < 2; ++round) {
      ASSERT_TRUE(Undo());
      EXPECT_EQ(Differences(before, Everything()), Lines()) << command.label;
      ASSERT_TRUE(Redo());
      EXPECT_EQ(Differences(after, Everything()), Lines()) << command.label;
    }
    ASSERT_TRUE(Undo());
  }
}

TEST_F(UndoableCommandTest, WhatIsCalledOffOrChangesNothingLeavesNoStep) {
  RecordIt("A");
  engine::ClearUndo(Doc());
  Person().AnswerOthers(false);
  DeleteIt("A");
  RecordIt("A");
  Do("Update Checked Elements", [this] { Menu(kUpdateChecked); });
  Do("Check All Elements", [this] { Menu(kCheckAll); });
  EXPECT_FALSE(engine::CanUndo(Doc()));
  EXPECT_EQ(Trash(), "");
}

// The state comes back, and the person hears what does not; redo has nothing to tell.
TEST_F(UndoableCommandTest, PreviewsThatAreTooLargeAreNamedWithTheirStagemark) {
  RecordIt("A");
  engine::ClearUndo(Doc());
  const std::string preview = Folder() + "/shot_SM/A.tif";
  const auto told = [&](bool undoes) {
    const std::size_t mark = Services().Get().ledger.Mark();
    EXPECT_TRUE(undoes ? Undo() : Redo());
    const auto failures = Services().Get().ledger.FailuresSince(mark);
    return failures.empty() ? std::string() : failures.front().message;
  };
  fs::resize_file(preview, engine::KeptPreviews::kMostBytesOfOne + 1);
  DeleteIt("A");
  EXPECT_EQ(told(true),
            "The preview of \"A\" does not come back: previews larger than 16 MB are not kept for "
            "undo.");
  EXPECT_EQ(Rows(), "[ ] * A\n");
  EXPECT_EQ(told(false), "");
  ASSERT_TRUE(Undo());
  // One that grew since is not taken away.
  RecordIt("A");
  fs::resize_file(preview, engine::KeptPreviews::kMostBytesOfOne + 1);
  EXPECT_EQ(
      told(true),
      "The preview of \"A\" stays as it is: previews larger than 16 MB are not kept for undo.");
  EXPECT_TRUE(fs::exists(preview));
  EXPECT_EQ(told(false), "");
}

// Somebody else put a link into the folder, so that another file would travel in the scene.
TEST_F(UndoableCommandTest, WhatALinkLeadsToIsNotInTheTrash) {
  RecordIt("A");
  const std::string preview = Folder() + "/shot_SM/A.tif";
  tests::WriteText(Folder() + "/secret", "nobody's business");
  fs::remove(preview);
  fs::create_symlink(Folder() + "/secret", preview);
  DeleteIt("A");
  EXPECT_FALSE(fs::is_symlink(preview));
  ASSERT_TRUE(engine::RestoreDeleted(Services().Get(), Doc(), 0));
  EXPECT_FALSE(fs::exists(preview));
  EXPECT_EQ(tests::ReadText(Folder() + "/secret"), "nobody's business");
}

// Unregistered changes stand on their own: an option that is switched later stays switched.
TEST_F(UndoableCommandTest, OnlyWhatTheCommandChangedGoesBack) {
  RecordIt("A");
  RecordIt("B");
  Menu(kOptions.back().id);
  const bool marked = Marked(kOptions.back().id);
  ASSERT_TRUE(Undo());
  EXPECT_EQ(Rows(), "[ ] * A\n");
  EXPECT_EQ(Marked(kOptions.back().id), marked);
  ASSERT_TRUE(Redo());
  EXPECT_EQ(Marked(kOptions.back().id), marked);
  EXPECT_EQ(Rows(), "[ ] A\n[ ] * B\n");
}

TEST_F(UndoableCommandTest, APlugInAloneRecordsNoMoreThanItAlwaysDid) {
  for (const char* name : {"A", "B"}) Record(name);
  Delete("A");
  Rename("B", "C");
  EXPECT_FALSE(engine::CanUndo(Doc()));
  Load("C");
  EXPECT_EQ(engine::DoneNames(Doc()).size(), 1U);
  EXPECT_EQ(Trash(), "");
}

TEST_F(UndoableCommandTest, DeletedAndOverwrittenOnesAreInTheTrashAndComeBack) {
  for (const char* name : {"A", "B", "C"}) RecordIt(name);
  engine::ClearUndo(Doc());
  const std::string before = Everything();
  DeleteIt("B");
  EXPECT_EQ(Trash(), "B deleted|");
  EXPECT_FALSE(fs::exists(Folder() + "/shot_SM/B.tif"));
  const auto restored = engine::RestoreDeleted(Services().Get(), Doc(), 0);
  ASSERT_TRUE(restored) << restored.Message();
  EXPECT_EQ(Trash(), "");
  EXPECT_EQ(engine::UndoName(Doc()), "Restore B");
  EXPECT_TRUE(fs::exists(Folder() + "/shot_SM/B.tif"));
  EventAdd();
  Deliver();
  // All that a load needs is there, the render settings under their old identity.
  EXPECT_EQ(Rows(), "[ ] A\n[ ] B\n[ ] * C\n");
  EXPECT_EQ(engine::LoadedId(Doc(), "B"), 1);
  ASSERT_TRUE(Undo());
  EXPECT_EQ(Trash(), "B deleted|");
  ASSERT_TRUE(Undo());
  EXPECT_EQ(Differences(before, Everything()), Lines());
  EXPECT_EQ(Trash(), "") << "what is back is not in the trash";

  SetSwitches(lamp_, MODE_OFF, MODE_OFF, FALSE);
  RecordIt("A");
  EXPECT_EQ(Trash(), "A over|");
  EXPECT_FALSE(engine::RestoreDeleted(Services().Get(), Doc(), 0)) << "the name is taken";
  EXPECT_FALSE(engine::RestoreDeleted(Services().Get(), Doc(), 7, "Z"));
  ASSERT_TRUE(engine::RestoreDeleted(Services().Get(), Doc(), 0, "A before"));
  EventAdd();
  Deliver();
  Load("A before");
  EXPECT_EQ(Switches(lamp_), "2 2 1");
  EXPECT_EQ(Rows(), "[ ] A\n[ ] * A before\n[ ] B\n[ ] C\n");
}

TEST_F(UndoableCommandTest, TheLastTwentyAreKept) {
  for (int i = 0; i < 25; ++i) RecordIt("s" + std::to_string(100 + i));
  DeleteIt("s124");
  Do("Delete All Elements", [this] { Menu(kDeleteAll); });
  const engine::DeletedStates& trash = engine::DeletedStatesOf(Doc());
  ASSERT_EQ(trash.size(), engine::kMostDeletedStates);
  EXPECT_EQ(trash.front().name, "s104");
  EXPECT_EQ(trash.back().name, "s123");
  EXPECT_FALSE(fs::exists(Folder() + "/shot_SM"));
  // Into a scene without stores, and with a folder made anew.
  ASSERT_TRUE(engine::RestoreDeleted(Services().Get(), Doc(), 19));
  EXPECT_TRUE(fs::exists(Folder() + "/shot_SM/s123.tif"));
  EventAdd();
  Deliver();
  EXPECT_EQ(Rows(), "[ ] s123\n");
  engine::EmptyTrash(Doc());
  EXPECT_EQ(Trash(), "");
  ASSERT_TRUE(Undo());
  EXPECT_EQ(engine::DeletedStatesOf(Doc()).size(), 19U);
}

TEST_F(UndoableCommandTest, TheTrashTravelsInTheFileAndNotInCopies) {
  for (const char* name : {"A", "B"}) RecordIt(name);
  const std::string before = engine::DumpDocument(Doc());
  DeleteIt("A");
  SaveAs("shot.c4d");
  auto opened = engine::OpenSceneFile(Services().Get(), Folder() + "/shot.c4d");
  ASSERT_TRUE(opened) << opened.Message();
  BaseDocument& doc = *opened.Value();
  ASSERT_EQ(engine::DeletedStatesOf(doc).size(), 1U);
  EXPECT_EQ(engine::DeletedStatesOf(doc)[0].deleted, "2011-03-05 14:07:59");
  EXPECT_TRUE(tests::Bytes(doc) == tests::ReadText(Folder() + "/shot.c4d")) << "kept as it is";
  const engine::OwnedDocument copy(
      static_cast<BaseDocument*>(doc.GetClone(COPY_DOCUMENT, nullptr)));
  EXPECT_TRUE(engine::DeletedStatesOf(*copy).empty());
  ASSERT_TRUE(engine::RestoreDeleted(Services().Get(), doc, 0));
  const auto states = engine::ReadStates(doc);
  ASSERT_TRUE(engine::FindState(doc, states, "A"));
  const auto settings = engine::FindSettingsOfStates(&doc);
  EXPECT_EQ(settings.size(), 2U) << "each has its copy";
  EXPECT_TRUE(fs::exists(Folder() + "/shot_SM/A.tif"));
}

TEST_F(UndoableCommandTest, AFullDiskKeepsThePreviewForTheNextTry) {
  RecordIt("A");
  const std::string preview = tests::ReadText(Folder() + "/shot_SM/A.tif");
  DeleteIt("A");
  Services().files.BreakFrom(1, engine::Operation::ReplaceFile);
  ASSERT_TRUE(Undo());
  EXPECT_FALSE(fs::exists(Folder() + "/shot_SM/A.tif"));
  EXPECT_EQ(Rows(), "[ ] * A\n") << "the Stagemark is back all the same";
  Services().files.Mend();
  ASSERT_TRUE(Redo());
  ASSERT_TRUE(Undo());
  EXPECT_TRUE(tests::ReadText(Folder() + "/shot_SM/A.tif") == preview);
}

// Random acts, undone to the start and done again to the end.
class RandomActs : public UndoableCommandTest, public testing::WithParamInterface<unsigned> {
 protected:
  unsigned Random(unsigned bound) {
    return (seed_ = seed_ * 1664525U + 1013904223U) / 65536U % bound;
  }
  std::string AnyName() { return std::string(1, static_cast<char>('A' + Random(5))); }
  // Of a row there is, empty where there is none.
  std::string AnyRow() {
    const std::vector<engine::StoredState> states = engine::ReadStates(Doc());
    return states.empty() ? "" : states[Random(static_cast<unsigned>(states.size()))].name;
  }
  void Act() {
    SetSwitches(lamp_, static_cast<LONG>(Random(3)), static_cast<LONG>(Random(3)), Random(2) != 0);
    Tick(kGeneratePreview, Random(2) != 0);
    const std::string row = AnyRow();
    if (row.empty()) return RecordIt(AnyName());
    switch (Random(9)) {
      case 0:
        return DeleteIt(row);
      case 1:
        return RenameIt(row, AnyName() + "2");
      case 2:
        SelectRows({row});
        return Do("Load", [this] { Press(kLoad); });
      case 3:
        Check(row);
        return Do("Delete Checked Elements", [this] { Menu(kDeleteChecked); });
      case 4:
        if (Random(4) > 0) return RecordIt(AnyName());
        return Do("Delete All Elements", [this] { Menu(kDeleteAll); });
      case 5:
        Doc().SetActiveObject(lamp_, SELECTION_NEW);
        Check(row);
        return Do("Set Selected Objects on Checked Elements", [this] { Menu(kSetObjects); });
      case 6:
        if (!engine::DeletedStatesOf(Doc()).empty() && Random(2) != 0)
          return engine::EmptyTrash(Doc());
        if (!engine::DeletedStatesOf(Doc()).empty())
          (void)engine::RestoreDeleted(Services().Get(), Doc(), 0, AnyName() + "3");
        EventAdd();
        return Deliver();
      default:
        return RecordIt(AnyName());
    }
  }

  unsigned seed_ = GetParam();
};

TEST_P(RandomActs, GoBackToTheStartAndForwardToTheEnd) {
  const auto all = [this] { return Everything() + Trash(); };
  SetSwitches(lamp_, 0, 0, TRUE);
  Doc().SetActiveObject(lamp_, SELECTION_NEW);
  std::vector<std::string> pictures;
  // Dumps before each step, and after it: switches are set between, which is no step.
  for (int i = 0; i < 40; ++i) {
    const std::size_t steps = engine::DoneNames(Doc()).size();
    Act();
    if (engine::DoneNames(Doc()).size() == steps) continue;
    ASSERT_EQ(engine::DoneNames(Doc()).size(), steps + 1);
    pictures.push_back(all());
  }
  for (int round = 0; round < 2; ++round) {
    for (std::size_t at = pictures.size(); at-- > 0;) {
      ASSERT_EQ(Differences(pictures[at], all()), Lines()) << at;
      ASSERT_TRUE(Undo());
    }
    EXPECT_FALSE(Undo());
    EXPECT_TRUE(engine::ReadStates(Doc()).empty());
    for (std::size_t at = 0; at < pictures.size(); ++at) {
      ASSERT_TRUE(Redo());
      ASSERT_EQ(Differences(pictures[at], all()), Lines()) << at;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomActs, testing::Range(1U, 13U));

}  // namespace
}  // namespace stagemarks
