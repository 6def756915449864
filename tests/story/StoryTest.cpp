// One whole story, with mouse and keys only, on the sample scene: import, hide, record, change materials, record again, recall,
// undo, export, delete, save under another name, close and start again. Each chapter looks at what came of it.
#include <gtest/gtest.h>

#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QtTest/QTest>
#include <filesystem>
#include <fstream>

#include "engine/scene/SceneDump.h"
#include "host/BaseMaterial.h"
#include "program/desktop/dialog/ListView.h"
#include "program/desktop/panels/MaterialsPanel.h"
#include "tests/desktop/Desk.h"
#include "tests/story/Hands.h"

namespace {

namespace fs = std::filesystem;
using desk::AnswerNext;
using desk::Desk;

constexpr host::LONG kList = 10005;
constexpr host::LONG kLoad = 10008;
constexpr host::LONG kDelete = 10009;
constexpr host::LONG kNameField = 10013;
constexpr host::LONG kRecord = 10023;
constexpr host::LONG kPreview = 10045;
constexpr host::LONG kExport = 10025;
constexpr int kChecked = 1;
constexpr int kName = 2;

using Nothing = std::vector<std::string>;

class Story : public testing::Test {
 public:
  host::BaseDocument& Doc() { return *host::GetActiveDocument(); }
  desktop::MainWindow& Window() { return desk_.Window(); }
  desktop::ListView& List() { return desk_.Gadget<desktop::ListView>(kList); }
  std::string State() { return engine::DumpState(Doc()); }
  // The rows of the list: "[x] name", a line each.
  std::string Rows() {
    std::string rows;
    for (int line = 0; line < List().model()->rowCount(); ++line) {
      const bool checked = List().model()->index(line, kChecked).data(Qt::CheckStateRole).toInt() == Qt::Checked;
      rows += std::string(checked ? "[x] " : "[ ] ") + List().model()->index(line, kName).data().toString().toStdString() + "\n";
    }
    return rows;
  }
  void Record(const QString& name) {
    hands::Type(desk_.Gadget<QLineEdit>(kNameField), name);
    hands::Click(desk_.Gadget<QPushButton>(kRecord));
    pictures::Settle(800);  // until the progress of the preview has gone
  }
  void Press(host::LONG button) { hands::Click(desk_.Gadget<QPushButton>(button)); }
  // The object and its row whose name begins so.
  QModelIndex RowOf(const QString& name, int column = 0) {
    const auto found = Window().Objects().model()->match(Window().Objects().model()->index(0, 0), Qt::DisplayRole, name, 1,
                                                         Qt::MatchStartsWith | Qt::MatchRecursive);
    return found.isEmpty() ? QModelIndex() : found.first().siblingAtColumn(column);
  }

  // --- What is done to the next box, and to the one after it.
  static void TypeIntoChooser(QFileDialog& chooser, const std::string& path) {
    pictures::Settle(300);
    hands::Type(*chooser.findChild<QLineEdit*>("fileNameEdit"), QString::fromStdString(path));
    hands::Press("Return");
  }
  void ChooseNext(const std::string& path, std::function<void()> then = {}) {
    AnswerNext<QFileDialog>([path, then](QFileDialog& box) {
      if (then) then();
      TypeIntoChooser(box, path);
    });
  }
  // Clicks a button of the next message or question and keeps its text in told_.
  void ClickNext(QMessageBox::StandardButton button, const char* picture = nullptr, std::function<void()> then = {}) {
    AnswerNext<QMessageBox>([this, button, picture, then](QMessageBox& box) {
      pictures::Settle(200);
      told_ += box.text().toStdString() + "\n";
      if (picture) {
        EXPECT_TRUE(pictures::Write(box, picture));
      }
      if (then) then();
      hands::Click(*box.button(button));
    });
  }
  std::string TakeTold() { return std::exchange(told_, {}); }

  // --- Chapters.
  void OpenTheSample();
  void HideTwoAndRecord();
  void ChangeAMaterialAndRecord();
  void RecallAndUndo();
  void Export();
  void DeleteOne();
  void SaveAsOther();
  void CloseAndComeBack();

  Desk desk_;
  std::string told_;
};

void Story::OpenTheSample() {
  ChooseNext(TEST_SOURCE_DIR "/scenes/dungeon/dungeon.gltf", [this] { ClickNext(QMessageBox::Ok); });
  hands::Press("ctrl+o");
  EXPECT_NE(TakeTold().find("Animations are left out"), std::string::npos);
  EXPECT_EQ(engine::CountScene(Doc()).objects, 85U);
  ChooseNext(desk_.Folder() + "/dungeon.c4d");
  hands::Press("ctrl+s");
  EXPECT_TRUE(fs::exists(desk_.Folder() + "/dungeon.c4d"));
  EXPECT_FALSE(Doc().GetChanged());
}

void Story::HideTwoAndRecord() {
  const QStringList names = {"edge-column-3.001", "switch.001"};
  for (const QString& name : names) {
    for (const int column : {desktop::ObjectRows::kEditor, desktop::ObjectRows::kRender}) {
      ASSERT_TRUE(RowOf(name).isValid());
      while (RowOf(name, column).data(desktop::ObjectRows::kMode).toInt() != host::MODE_OFF) {
        hands::Click(Window().Objects(), RowOf(name, column));
        if (HasFailure()) return;
      }
    }
  }
  hands::Click(desk_.Gadget<QWidget>(kPreview), QPoint(8, desk_.Gadget<QWidget>(kPreview).height() / 2));
  Record("Two hidden");
  EXPECT_EQ(Rows(), "[ ] Two hidden\n");
  EXPECT_TRUE(fs::exists(desk_.Folder() + "/dungeon_SM/Two hidden.tif"));
}

void Story::ChangeAMaterialAndRecord() {
  const std::string before = State();
  auto* panel = Window().findChild<QDockWidget*>("materials");
  ASSERT_NE(panel, nullptr);
  panel->raise();
  Desk::Rest();
  auto* grid = panel->findChild<QAbstractItemView*>();
  const QModelIndex torch = grid->model()->match(grid->model()->index(0, 0), Qt::DisplayRole, "torch").value(0);
  ASSERT_TRUE(torch.isValid());
  const QModelIndex object = RowOf("ground-tile.008");
  Window().Objects().scrollTo(object);
  Desk::Rest();
  hands::Drag(*grid->viewport(), grid->visualRect(torch).center(), *Window().Objects().viewport(),
              Window().Objects().visualRect(object).center());
  EXPECT_EQ(engine::DumpDifference(before, State()).size(), 2U) << "one line as it was and as it is";
  Record("Other ground");
  EXPECT_EQ(Rows(), "[ ] Other ground\n[ ] Two hidden\n");
}

void Story::RecallAndUndo() {
  const std::string changed = State();
  hands::Click(List(), List().model()->index(1, kName));
  EXPECT_TRUE(List().selectionModel()->isRowSelected(1));
  Press(kLoad);
  const std::string recalled = State();
  EXPECT_FALSE(engine::DumpDifference(changed, recalled).empty());
  hands::Press("ctrl+z");
  EXPECT_EQ(engine::DumpDifference(changed, State()), Nothing());
  hands::Press("ctrl+shift+z");
  EXPECT_EQ(engine::DumpDifference(recalled, State()), Nothing());
  hands::Press("ctrl+z");
}

void Story::Export() {
  hands::Choose(Window().Docks().ViewOf(*desk_.Dialog())->Menus(), "Edit", "Check All Elements");
  EXPECT_EQ(Rows(), "[x] Other ground\n[x] Two hidden\n");
  const std::string to = desk_.Folder() + "/export";
  fs::create_directory(to);
  ClickNext(QMessageBox::Ok, nullptr, [this, to] { ChooseNext(to); });
  Press(kExport);
  EXPECT_NE(TakeTold().find("overwrite"), std::string::npos);
  for (const char* name : {"dungeon Other ground", "dungeon Two hidden"}) {
    EXPECT_TRUE(fs::exists(to + "/" + name + "/" + name + ".c4d")) << name;
  }
  EXPECT_EQ(desk_.App().Documents().size(), 1U);
}

void Story::DeleteOne() {
  hands::Click(List(), List().model()->index(0, kName));
  ClickNext(QMessageBox::Yes, "question");
  Press(kDelete);
  EXPECT_NE(TakeTold(), "");
  EXPECT_EQ(Rows(), "[x] Two hidden\n");
  EXPECT_FALSE(fs::exists(desk_.Folder() + "/dungeon_SM/Other ground.tif"));
}

void Story::SaveAsOther() {
  fs::create_directory(desk_.Folder() + "/other_SM");
  ChooseNext(desk_.Folder() + "/other.c4d", [this] { ClickNext(QMessageBox::Yes, "question-side-folder"); });
  hands::Press("ctrl+shift+s");
  EXPECT_NE(TakeTold().find("Stagemark directory"), std::string::npos);
  EXPECT_TRUE(fs::exists(desk_.Folder() + "/other_SM/Two hidden.tif"));
  EXPECT_TRUE(fs::exists(desk_.Folder() + "/dungeon_SM/Two hidden.tif"));
  EXPECT_EQ(Window().windowTitle(), "other.c4d[*]");
  EXPECT_FALSE(Window().isWindowModified());
}

void Story::CloseAndComeBack() {
  auto* panel = Window().findChild<QDockWidget*>("layers");
  const bool wasShown = panel->toggleViewAction()->isChecked();
  hands::Choose(*Window().menuBar(), "Window", panel->windowTitle());
  EXPECT_NE(panel->toggleViewAction()->isChecked(), wasShown);
  const int width = desk_.PluginDock()->width();
  hands::Press("ctrl+q");
  EXPECT_FALSE(Window().isVisible());
  desk_.Restart();
  EXPECT_EQ(Window().findChild<QDockWidget*>("layers")->toggleViewAction()->isChecked(), !wasShown);
  ASSERT_NE(desk_.PluginDock(), nullptr);
  EXPECT_NEAR(desk_.PluginDock()->width(), width, 2);
  EXPECT_EQ(Window().Commands().RecentFiles().value(0).toStdString(), desk_.Folder() + "/other.c4d");
  const std::string kept = desktop::AutosaveRoot(desk_.Outside());
  EXPECT_TRUE(!fs::exists(kept) || fs::is_empty(kept));
}

TEST_F(Story, FromTheSampleToTheNextStart) {
  ASSERT_TRUE(QTest::qWaitForWindowActive(&Window(), 20000));
  for (auto chapter :
       {&Story::OpenTheSample, &Story::HideTwoAndRecord, &Story::ChangeAMaterialAndRecord, &Story::RecallAndUndo}) {
    (this->*chapter)();
    if (HasFailure()) {
      pictures::Write(Window(), "story-stopped");
      return;
    }
  }
  EXPECT_TRUE(QTest::qWaitFor([this] { return Window().View().IsFinished(); }, 60000));
  EXPECT_TRUE(pictures::Write(Window(), "main-window-story"));
  EXPECT_TRUE(pictures::Write(*desk_.PluginDock(), "dialog-story"));
  for (auto chapter : {&Story::Export, &Story::DeleteOne, &Story::SaveAsOther, &Story::CloseAndComeBack}) {
    (this->*chapter)();
    if (HasFailure()) {
      pictures::Write(Window(), "story-stopped");
      return;
    }
  }
}

}  // namespace
