// Edit > Undo after what a person does in the Stagemarks dialog.
#include <gtest/gtest.h>

#include <QInputDialog>
#include <QMenu>
#include <QMessageBox>
#include <QStatusBar>
#include <filesystem>
#include <fstream>

#include "engine/scene/SceneDump.h"
#include "engine/undo/Undo.h"
#include "host/BaseObject.h"
#include "program/desktop/panels/TrashPanel.h"
#include "program/desktop/recovery/Autosave.h"
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

// WithPreviews, saved after recording; with commands that change or delete previews, and ways to
// give the scene up again: closing and restarting.
struct WithSavedPreviews : WithPreviews {
  std::string path = Folder() + "/room.c4d";
  std::string saved;

  WithSavedPreviews() {
    EXPECT_TRUE(Window().Commands().Save(Scene()));
    Rest();
    saved = Beside();
  }
  // Each preview with its bytes.
  std::string Beside() const {
    std::string text;
    for (const auto& entry : fs::directory_iterator(side))
      text += entry.path().filename().string() + " " + tests::ReadText(entry.path()) + "|";
    return text;
  }
  void RecordOver(const char* name) {
    desk::AnswerNext<QMessageBox>([](QMessageBox& box) { box.button(QMessageBox::Yes)->click(); });
    desk::RecordState(*this, name);
  }
  void RenameFirst() {
    desk::ChooseState(*this, 0);
    auto& field = Gadget<QLineEdit>(stagemarks::kNameField);
    field.clear();
    QTest::keyClicks(&field, "Dawn");
    QTest::mouseClick(&Gadget<QPushButton>(stagemarks::kRename), Qt::LeftButton);
    Rest();
  }
  void DeleteAllWithTheFolder() {
    desk::AnswerNext<QMessageBox>([](QMessageBox& box) { box.button(QMessageBox::Yes)->click(); });
    for (QAction* menu : Window().Docks().ViewOf(*Dialog())->Menus().actions()) {
      for (QAction* entry : menu->menu()->actions())
        if (entry->text() == "Delete All Elements") entry->trigger();
    }
    Rest();
    EXPECT_FALSE(fs::exists(side));
  }
  void Close() {
    desk::AnswerNext<QMessageBox>(
        [](QMessageBox& box) { box.button(QMessageBox::Discard)->click(); });
    EXPECT_TRUE(Window().Commands().Close(Scene()));
    Rest();
  }
  void RestartAndAnswer(const char* answer) {
    Restart();
    desk::AnswerNext<QMessageBox>([answer](QMessageBox& box) {
      for (QAbstractButton* each : box.buttons())
        if (each->text().remove('&') == answer) return each->click();
    });
    Window().OfferLostWork();
    Rest();
  }
  // How many documents have previews put aside.
  std::size_t Aside() {
    std::size_t count = 0;
    for (const auto& entry : fs::recursive_directory_iterator(Services().folders.state))
      count += entry.path().extension() == desktop::kSavedPreviewsEnding ? 1 : 0;
    return count;
  }
};

TEST(UndoStates, PreviewsAreAsTheSceneIsWhenItIsClosedWithoutSaving) {
  WithSavedPreviews desk;
  const struct {
    const char* name;
    std::function<void()> act;
  } acts[] = {
      {"delete", [&] { desk.Delete(0); }},
      {"rename", [&] { desk.RenameFirst(); }},
      {"record over", [&] { desk.RecordOver("Night"); }},
      {"record", [&] { desk::RecordState(desk, "Noon"); }},
      {"delete all", [&] { desk.DeleteAllWithTheFolder(); }},
      {"several",
       [&] {
         desk.RenameFirst();
         desk.Delete(0);
         desk.Go("Undo");
         desk.RecordOver("Night");
         desk.DeleteAllWithTheFolder();
         desk::RecordState(desk, "Day");
       }},
  };
  for (const auto& one : acts) {
    // So that no picture is the one before.
    Scene().GetFirstObject()->SetEditorMode(host::MODE_ON);
    Scene().InsertObject(host::BaseObject::Alloc(host::Ocube), nullptr, nullptr);
    one.act();
    EXPECT_TRUE(!fs::exists(desk.side) || desk.Beside() != desk.saved) << one.name;
    EXPECT_EQ(desk.Aside(), 1U) << one.name;
    desk.Close();
    EXPECT_TRUE(desk.Beside() == desk.saved) << one.name;
    EXPECT_EQ(desk.Aside(), 0U) << one.name;
    ASSERT_TRUE(desk.Window().Commands().Open(desk.path));
    Desk::Rest();
    EXPECT_EQ(desk::CountStates(desk), 2) << one.name;
  }
}

TEST(UndoStates, PreviewsGoWithTheSceneThatIsSaved) {
  WithSavedPreviews desk;
  desk.Delete(0);
  // Elsewhere it has none; where it was it still has the Stagemark.
  const std::string other = desk.Folder() + "/other.c4d";
  desk::AnswerNext<QFileDialog>([&](QFileDialog& dialog) {
    pictures::Settle();  // until it has selected what it proposes
    dialog.findChild<QLineEdit*>()->setText(QString::fromStdString(other));
    QMetaObject::invokeMethod(&dialog, "accept");
  });
  ASSERT_TRUE(desk.Window().Commands().SaveAs(Scene()));
  Desk::Rest();
  EXPECT_TRUE(desk.Beside() == desk.saved);
  EXPECT_FALSE(fs::exists(desk.Folder() + "/other_SM/Day.tif"));
  desk.Delete(0);
  ASSERT_TRUE(desk.Window().Commands().Save(Scene()));
  Desk::Rest();
  EXPECT_EQ(desk.Aside(), 0U);
  Scene().SetChanged();
  desk.Close();
  EXPECT_FALSE(fs::exists(desk.Folder() + "/other_SM/Night.tif"));
  EXPECT_TRUE(desk.Beside() == desk.saved);
}

TEST(UndoStates, AfterACrashPreviewsComeBackWithWhatIsGivenUp) {
  WithSavedPreviews desk;
  const auto deleteAndCrash = [&](const char* answer) {
    if (Scene().GetDocumentName() != host::Filename("room.c4d")) {
      ASSERT_TRUE(desk.Window().Commands().Open(desk.path));
    }
    Desk::Rest();
    desk.Delete(0);
    desk.Window().GetAutosave().KeepNow();
    desk.RestartAndAnswer(answer);
  };
  deleteAndCrash("Discard");
  EXPECT_TRUE(desk.Beside() == desk.saved);
  EXPECT_EQ(desk.Aside(), 0U);
  deleteAndCrash("Recover");
  EXPECT_FALSE(fs::exists(desk.side + "/Day.tif"));
  EXPECT_EQ(desk.Aside(), 1U);
  desk.Close();
  EXPECT_TRUE(desk.Beside() == desk.saved);
  // Before anything of the scene was kept.
  ASSERT_TRUE(desk.Window().Commands().Open(desk.path));
  Desk::Rest();
  desk.DeleteAllWithTheFolder();
  for (const auto& entry : fs::recursive_directory_iterator(desk.Services().folders.state))
    if (entry.path().parent_path().parent_path().filename() == "autosave" &&
        entry.path().extension() == ".c4d")
      fs::remove(entry.path());
  desk.Restart();
  desk.Window().OfferLostWork();
  EXPECT_TRUE(desk.Beside() == desk.saved);
  EXPECT_EQ(desk.Aside(), 0U);
}

// Nothing that a link leads to is copied anywhere.
TEST(UndoStates, OfPreviewsThatAreLinksNothingIsPutAside) {
  WithSavedPreviews desk;
  tests::WriteText(desk.Folder() + "/secret", "nobody's business");
  fs::remove(desk.side + "/Day.tif");
  fs::create_symlink(desk.Folder() + "/secret", desk.side + "/Day.tif");
  desk.Delete(0);
  desk.Close();
  for (const auto& entry : fs::recursive_directory_iterator(desk.Folder())) {
    if (entry.is_regular_file() && entry.path().filename() != "secret") {
      EXPECT_EQ(tests::ReadText(entry.path()).find("nobody's business"), std::string::npos)
          << entry.path();
    }
  }
}

// Files that another program saved meanwhile stay: only missing previews come back. Those that
// cannot be given back now are tried again at the next start.
TEST(UndoStates, PreviewsOfOthersStayAndThoseThatCannotComeBackWait) {
  WithSavedPreviews desk;
  desk.Delete(0);
  desk.RecordOver("Night");
  tests::WriteText(desk.side + "/Night.tif", "of another program");
  tests::WriteText(desk.path, tests::ReadText(desk.path));
  desk.Close();
  EXPECT_EQ(tests::ReadText(desk.side + "/Night.tif"), "of another program");
  EXPECT_TRUE(fs::exists(desk.side + "/Day.tif"));
  desk.saved = desk.Beside();

  ASSERT_TRUE(desk.Window().Commands().Open(desk.path));
  Desk::Rest();
  desk.DeleteAllWithTheFolder();
  tests::WriteText(desk.side, "no folder");
  desk.Close();
  EXPECT_TRUE(desk.Window().statusBar()->currentMessage().startsWith(
      "Not all previews are again as they were saved."));
  EXPECT_EQ(desk.Aside(), 1U);
  EXPECT_TRUE(desk.Window().close());
  fs::remove(desk.side);
  desk.Restart();
  desk.Window().OfferLostWork();
  EXPECT_TRUE(desk.Beside() == desk.saved);
}

}  // namespace
