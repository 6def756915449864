// Edit > Undo after what a person does in the Stagemarks dialog.
#include <gtest/gtest.h>

#include <QInputDialog>
#include <QMessageBox>
#include <QStatusBar>
#include <filesystem>
#include <fstream>

#include "engine/scene/SceneDump.h"
#include "engine/undo/Undo.h"
#include "host/BaseObject.h"
#include "program/desktop/panels/TrashPanel.h"
#include "tests/desktop/States.h"
#include "tests/support/ScratchFolder.h"

namespace {

namespace fs = std::filesystem;
using desk::Desk;
using desk::Scene;
using Lines = std::vector<std::string>;

// A saved scene with "Day" and "Night", each with a preview.
struct WithPreviews : Desk {
  std::string side = Folder() + "/room_SM";

  WithPreviews() {
    auto* object = host::BaseObject::Alloc(host::Onull);
    Scene().AppendObject(object);
    EXPECT_TRUE(App().SaveDocumentAs(Scene(), Folder() + "/room.c4d"));
    QTest::mouseClick(&Gadget<QWidget>(stagemarks::kGeneratePreview), Qt::LeftButton, {},
                      QPoint(8, 8));
    desk::RecordState(*this, "Day");
    object->SetEditorMode(host::MODE_OFF);
    desk::RecordState(*this, "Night");
  }
  void Delete(int row) {
    desk::ChooseState(*this, row);
    desk::AnswerNext<QMessageBox>([](QMessageBox& box) {
      EXPECT_EQ(box.text(),
                "Are you sure you want to delete this element?  This cannot be undone.");
      box.button(QMessageBox::Yes)->click();
    });
    QTest::mouseClick(&Gadget<QPushButton>(stagemarks::kDelete), Qt::LeftButton);
    Rest();
  }
  void Go(const char* entry) {
    QAction& action = Entry("Edit", entry);
    EXPECT_TRUE(action.isEnabled());
    action.trigger();
    Rest();
  }
};

TEST(UndoStates, ADeletedStateComesBackWithItsPreviewAndGoesAgain) {
  WithPreviews desk;
  const std::string before = engine::DumpDocument(Scene());
  const std::string preview = tests::ReadText(desk.side + "/Day.tif");
  ASSERT_FALSE(preview.empty());
  desk.Delete(0);
  const std::string after = engine::DumpDocument(Scene());
  EXPECT_EQ(desk::CountStates(desk), 1);
  EXPECT_FALSE(fs::exists(desk.side + "/Day.tif"));
  EXPECT_EQ(desk.Entry("Edit", "Undo").text(), "&Undo Delete Day");
  for (int round = 0; round < 2; ++round) {
    desk.Go("Undo");
    EXPECT_EQ(engine::DumpDifference(before, engine::DumpDocument(Scene())), Lines());
    EXPECT_EQ(desk::CountStates(desk), 2);
    EXPECT_TRUE(tests::ReadText(desk.side + "/Day.tif") == preview);
    EXPECT_EQ(desk.Entry("Edit", "Redo").text(), "&Redo Delete Day");
    desk.Go("Redo");
    EXPECT_EQ(engine::DumpDifference(after, engine::DumpDocument(Scene())), Lines());
    EXPECT_EQ(desk::CountStates(desk), 1);
    EXPECT_FALSE(fs::exists(desk.side + "/Day.tif"));
  }
}

TEST(UndoStates, StepsHaveTheNamesOfWhatWasDone) {
  WithPreviews desk;
  desk::LoadState(desk, 0);
  EXPECT_EQ(engine::DoneNames(Scene()),
            (std::vector<std::string>{"Record Day", "Record Night", "Load Day"}));
}

// The panel lists what is gone, and gives it back.
TEST(UndoStates, TheTrashGivesBackWhatIsChosen) {
  WithPreviews desk;
  desk.Raise("trash");
  auto& panel = desk.Panel<desktop::TrashPanel>("trash");
  EXPECT_TRUE(pictures::Write(panel, "trash-empty"));
  desk.Delete(0);
  desk::AnswerNext<QMessageBox>([](QMessageBox& box) { box.button(QMessageBox::Yes)->click(); });
  desk::RecordState(desk, "Night");
  const auto rows = [&] {
    QStringList texts;
    for (int row = 0; row < panel.List().topLevelItemCount(); ++row)
      texts += panel.List().topLevelItem(row)->text(desktop::TrashList::kName) + " " +
               panel.List().topLevelItem(row)->text(desktop::TrashList::kWhat);
    return texts;
  };
  EXPECT_EQ(rows(), (QStringList{"Night Recorded over", "Day Deleted"}));
  EXPECT_TRUE(pictures::Write(desk.Window(), "trash"));
  const auto open = [&](int row) {
    QTreeWidgetItem* item = panel.List().topLevelItem(row);
    emit panel.List().itemDoubleClicked(item, 0);
  };
  panel.List().setCurrentItem(panel.List().topLevelItem(1));
  open(1);
  Desk::Rest();
  EXPECT_EQ(desk::CountStates(desk), 2);
  EXPECT_TRUE(fs::exists(desk.side + "/Day.tif"));
  EXPECT_EQ(desk.Window().statusBar()->currentMessage(), "Restored \"Day\".");
  // Its name is taken: another one is asked for.
  desk::AnswerNext<QInputDialog>([](QInputDialog& box) {
    EXPECT_EQ(box.textValue(), "Night (restored)");
    box.accept();
  });
  panel.List().setCurrentItem(panel.List().topLevelItem(0));
  open(0);
  Desk::Rest();
  EXPECT_EQ(rows(), QStringList());
  EXPECT_EQ(desk::CountStates(desk), 3);
  desk.Go("Undo");
  desk.Go("Undo");
  EXPECT_EQ(rows().size(), 2);
  EXPECT_EQ(desk::CountStates(desk), 1);
}

// Where nothing may be written, the state comes back and the person hears what did not.
TEST(UndoStates, APreviewThatCannotComeBackIsTold) {
  WithPreviews desk;
  desk.Delete(0);
  fs::remove_all(desk.side);
  std::ofstream(desk.side) << "no folder";
  desk.Go("Undo");
  EXPECT_EQ(desk::CountStates(desk), 2);
  ASSERT_TRUE(desk.Window().Reporting().Window());
  desk.Window().Reporting().Window()->close();
}

}  // namespace
