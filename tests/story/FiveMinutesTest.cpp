// The five minutes of the README, step by step with mouse and keys, on a copy of the scene that the
// desktop begins with.
#include <gtest/gtest.h>

#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QtTest/QTest>
#include <filesystem>

#include "engine/scene/SceneDump.h"
#include "host/BaseObject.h"
#include "program/desktop/dialog/ListView.h"
#include "source/Stagemarks/keys/Gadgets.h"
#include "tests/desktop/Desk.h"
#include "tests/story/Hands.h"

namespace {

namespace fs = std::filesystem;
using desk::AnswerNext;
using desk::Desk;
using Same = std::vector<std::string>;

class FiveMinutes : public testing::Test {
 public:
  static constexpr int kCheckColumn = 1;
  static constexpr int kNameColumn = 2;

  void Open() {
    fs::copy(TEST_SOURCE_DIR "/scenes/teapot", desk_.Folder() + "/sample",
             fs::copy_options::recursive);
    ASSERT_TRUE(desk_.Window().Commands().Open(desk_.Folder() + "/sample/teapot.c4d"));
    Desk::Rest();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&desk_.Window(), 20000));
  }
  desktop::ListView& List() { return desk_.Gadget<desktop::ListView>(stagemarks::kList); }
  QModelIndex Row(const char* name, int column = kNameColumn) {
    return List()
        .model()
        ->match(List().model()->index(0, kNameColumn), Qt::DisplayRole, name, 1, Qt::MatchExactly)
        .value(0)
        .siblingAtColumn(column);
  }
  desktop::ObjectTree& Tree() { return desk_.Window().Objects(); }
  QModelIndex ObjectRow(const char* name, int column = 0) {
    return Tree()
        .model()
        ->match(Tree().model()->index(0, 0), Qt::DisplayRole, name, 1,
                Qt::MatchExactly | Qt::MatchRecursive)
        .value(0)
        .siblingAtColumn(column);
  }
  std::string State() { return engine::DumpState(desk::Scene()); }
  static bool Has(const std::string& state, const char* part) {
    return state.find(part) != std::string::npos;
  }
  void Record(const char* name) {
    hands::Type(desk_.Gadget<QLineEdit>(stagemarks::kNameField), name);
    hands::Click(desk_.Gadget<QPushButton>(stagemarks::kRecord));
    EXPECT_TRUE(pictures::WaitFor([&] {
      return Row(name).isValid() && !QApplication::activeModalWidget();
    })) << name;
    pictures::Settle();
  }

  // Waits for the state: keys typed while it is still being loaded are taken afterwards.
  void ExpectBack(const std::string& state) {
    (void)pictures::WaitFor([&] { return State() == state; });
    EXPECT_EQ(engine::DumpDifference(state, State()), Same());
  }

  void LoadTheOpenLid();
  void GoThroughTheStates();
  void RecordTwo();
  void ComeBack();
  void Export();

  Desk desk_;
};

void FiveMinutes::LoadTheOpenLid() {
  EXPECT_EQ(List().model()->rowCount(), 6);
  const std::string before = State();
  const QPoint place = List().visualRect(Row("4 Lid open, evening")).center();
  hands::Click(*List().viewport(), place, 2);
  EXPECT_TRUE(pictures::WaitFor([&] {
    return Has(State(), "scene camera \"Close-up\"") && !Has(State(), "\"Lid, open\" modes 1 1");
  }));
  hands::Press("ctrl+z");
  ExpectBack(before);
}

// From the one that was loaded last, which undo and redo know, too.
void FiveMinutes::GoThroughTheStates() {
  hands::Press("ctrl+shift+z");
  EXPECT_TRUE(pictures::WaitFor([&] { return Has(State(), "scene camera \"Close-up\""); }));
  hands::Press("ctrl+Next");
  EXPECT_TRUE(pictures::WaitFor([&] { return Has(State(), "scene camera \"From above\""); }));
  hands::Press("ctrl+Prior");
  EXPECT_TRUE(pictures::WaitFor([&] { return Has(State(), "scene camera \"Close-up\""); }));
}

void FiveMinutes::RecordTwo() {
  hands::Click(List(), Row("1 Copper, morning"));
  hands::Click(desk_.Gadget<QPushButton>(stagemarks::kLoad));
  EXPECT_TRUE(pictures::WaitFor([&] { return Has(State(), "scene camera \"Front\""); }));
  desktop::Viewport& view = desk_.Window().View();
  hands::Click(view, {5, view.height() - 5});
  for (int i = 0; i < 6; ++i) hands::Press("Right");
  hands::Click(view.Notice().NewCamera());
  hands::Click(view.Notice().MakeSceneCamera());
  auto& preview = desk_.Gadget<QWidget>(stagemarks::kGeneratePreview);
  hands::Click(preview, QPoint(8, preview.height() / 2));
  Record("7 Mine");
  EXPECT_TRUE(fs::exists(desk_.Folder() + "/sample/teapot_SM/7 Mine.tif"));
  for (const int column : {desktop::ObjectModel::kEditor, desktop::ObjectModel::kRender}) {
    for (int clicks = 0; clicks < 2; ++clicks) hands::Click(Tree(), ObjectRow("Spoon", column));
    EXPECT_EQ(ObjectRow("Spoon", column).data(desktop::ObjectModel::kMode).toInt(), host::MODE_OFF);
  }
  desk_.Raise("materials");
  auto& grid = *desk_.Panel<QWidget>("materials").findChild<QAbstractItemView*>();
  const QModelIndex brass =
      grid.model()->match(grid.model()->index(0, 0), Qt::DisplayRole, "Brass").value(0);
  Tree().scrollTo(ObjectRow("Tray"));
  hands::Drag({grid, brass}, {Tree(), ObjectRow("Tray")});
  const auto tray = [&] {
    const std::string state = State();
    const std::size_t tag = state.find("\"Tray\" tag");
    return state.substr(tag, state.find('\n', tag) - tag);
  };
  EXPECT_TRUE(pictures::WaitFor([&] { return Has(tray(), "Brass"); })) << tray();
  Record("8 Mine too");
}

void FiveMinutes::ComeBack() {
  const std::string second = State();
  hands::Click(List(), Row("7 Mine"));
  hands::Click(desk_.Gadget<QPushButton>(stagemarks::kLoad));
  const auto differs = engine::DumpDifference(second, State());
  EXPECT_EQ(differs.size(), 4U) << "the spoon and the tray, as they were and as they are";
  EXPECT_TRUE(pictures::Write(desk_.Window(), "five-minutes"));
  hands::Press("ctrl+z");
  ExpectBack(second);
}

void FiveMinutes::Export() {
  for (const char* name : {"7 Mine", "8 Mine too"}) hands::Click(List(), Row(name, kCheckColumn));
  const std::string to = desk_.Folder() + "/states";
  fs::create_directory(to);
  AnswerNext<QMessageBox>([to](QMessageBox& question) {
    EXPECT_TRUE(QTest::qWaitForWindowActive(&question, 20000));
    AnswerNext<QFileDialog>([to](QFileDialog& chooser) {
      EXPECT_TRUE(QTest::qWaitForWindowActive(&chooser, 20000));
      hands::Type(*chooser.findChild<QLineEdit*>("fileNameEdit"), QString::fromStdString(to));
      hands::Press("Return");
    });
    hands::Click(*question.button(QMessageBox::Ok));
  });
  hands::Click(desk_.Gadget<QPushButton>(stagemarks::kGenerateFiles));
  for (const std::string name : {"teapot 7 Mine", "teapot 8 Mine too"}) {
    EXPECT_TRUE(fs::exists(to + "/" + name + "/" + name + ".c4d")) << name;
  }
}

TEST_F(FiveMinutes, DoWhatTheReadmeSays) {
  Open();
  for (const auto step : {&FiveMinutes::LoadTheOpenLid, &FiveMinutes::GoThroughTheStates,
                          &FiveMinutes::RecordTwo, &FiveMinutes::ComeBack, &FiveMinutes::Export}) {
    if (!HasFailure()) (this->*step)();
  }
  if (HasFailure()) pictures::Write(desk_.Window(), "five-minutes-stopped");
}

}  // namespace
