// Pictures of states as files, made at the desktop beside a person's work, or handed to a farm.
#include <QLineEdit>
#include <QMessageBox>
#include <QProcess>
#include <QTreeWidget>
#include <QtTest/QTest>
#include <filesystem>

#include "engine/scene/DocumentState.h"
#include "engine/scene/SceneDump.h"
#include "engine/scenefile/SceneFile.h"
#include "program/desktop/render/FarmWindow.h"
#include "program/desktop/render/RenderStatesWindow.h"
#include "tests/desktop/Desk.h"
#include "tests/desktop/States.h"
#include "tests/desktop/WithCube.h"

namespace {

using desk::Desk;
using desktop::FarmWindow;
using desktop::PictureRows;
using desktop::RenderStatesWindow;
using Result = PictureRows::Row::Result;

namespace fs = std::filesystem;

class TwoShots : public desk::WithCube {
 public:
  TwoShots() {
    desk::RecordState(*this, "Shown");
    cube->SetRenderMode(host::MODE_OFF);
    desk::RecordState(*this, "Hidden");
    Rest();
  }

  template <class Window>
  static Window& Opened() {
    Window* window = nullptr;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
      auto* found = dynamic_cast<Window*>(widget);
      if (found && found->isVisible()) window = found;
    }
    if (!window) throw std::runtime_error("no window");
    return *window;
  }
  // The window that the entry of the menu opens, with small pictures and a folder of the test.
  RenderStatesWindow& Open() {
    Entry("Render", "Render States").trigger();
    auto& window = Opened<RenderStatesWindow>();
    EXPECT_TRUE(Finishes(window));
    Type(window, "folder", Out());
    Type(window, "sizes", "64x48");
    return window;
  }
  std::string Out() const { return Folder() + "/out"; }
  static void Type(QWidget& window, const char* field, const std::string& text) {
    auto& edit = *window.findChild<QLineEdit*>(field);
    edit.setFocus();
    edit.setText(QString::fromStdString(text));
    emit edit.textEdited(edit.text());
    emit edit.editingFinished();
  }
  static void Press(QWidget& window, const QString& text) {
    for (QPushButton* button : window.findChildren<QPushButton*>()) {
      if (button->text().remove('&') == text) return QTest::mouseClick(button, Qt::LeftButton);
    }
    FAIL() << "no button " << text.toStdString();
  }
  static bool Finishes(RenderStatesWindow& window) {
    return QTest::qWaitFor([&] { return window.IsFinished(); }, 60000);
  }
  // The table as the fields now say, as "file result" lines.
  static std::string Rows(RenderStatesWindow& window) {
    window.Plan();
    EXPECT_TRUE(Finishes(window));
    Desk::Rest();
    EXPECT_TRUE(Finishes(window));
    std::string text;
    for (int i = 0; i < window.Rows().rowCount(); ++i) {
      for (const int column : {PictureRows::kFile, PictureRows::kResult}) {
        const QModelIndex index = window.Rows().index(i, column);
        text += window.Rows().data(index, Qt::DisplayRole).toString().toStdString() +
                (column == PictureRows::kFile ? ": " : "\n");
      }
    }
    return text;
  }
  std::string FilesThere() const {
    std::string names;
    for (const auto& entry : fs::directory_iterator(Out()))
      names += entry.path().filename().string() + " ";
    return names;
  }
};

TEST(RenderStates, TellsThenRendersThenKeepsAndLeavesTheDocumentAlone) {
  TwoShots desk;
  const std::string before = engine::DumpState(desk::Scene());
  RenderStatesWindow& window = desk.Open();
  EXPECT_EQ(TwoShots::Rows(window),
            "Untitled Hidden.png: To be rendered\nUntitled Shown.png: To be rendered\n");
  EXPECT_TRUE(window.Said().startsWith("2 pictures; 6144 pixels to render"))
      << window.Said().toStdString();
  EXPECT_FALSE(fs::exists(desk.Out()));
  TwoShots::Press(window, "Render");
  ASSERT_TRUE(TwoShots::Finishes(window));
  EXPECT_TRUE(window.Said().startsWith("2 pictures rendered: ")) << window.Said().toStdString();
  for (int i = 0; i < 2; ++i) {
    const auto index = window.Rows().index(i, PictureRows::kFile);
    const auto shown = window.Rows().data(index, Qt::DecorationRole).value<QPixmap>().toImage();
    EXPECT_EQ(qAlpha(shown.pixel(shown.width() / 2, shown.height() / 2)), 255) << i;
  }
  EXPECT_TRUE(pictures::Write(window, "render-states"));
  const std::string shown = tests::ReadText(desk.Out() + "/Untitled Shown.png");
  EXPECT_NE(shown, tests::ReadText(desk.Out() + "/Untitled Hidden.png"));
  EXPECT_EQ(TwoShots::Rows(window),
            "Untitled Hidden.png: Is there\nUntitled Shown.png: Is there\n");
  EXPECT_EQ(engine::DumpState(desk::Scene()), before);
  // A change that is seen in all of them.
  host::Matrix moved = desk.cube->GetMl();
  moved.off.x = 150;
  desk.cube->SetMl(moved);
  EXPECT_EQ(TwoShots::Rows(window),
            "Untitled Hidden.png: To be rendered\nUntitled Shown.png: To be rendered\n");
}

TEST(RenderStates, MakesTheNamesThatTheFieldsSay) {
  TwoShots desk;
  RenderStatesWindow& window = desk.Open();
  const struct {
    const char* states;
    const char* sizes;
    const char* frames;
    const char* names;
    const char* rows;  // or what is said
  } kCases[] = {
      {"Sh*", "64x48", "", "{state}", "Shown.png: To be rendered\n"},
      {"*d?n", "64x48", "", "{index:03}/{state}", "Hidden.png: To be rendered\n"},
      {"Shown", "64x48 32x24", "", "{state} {size}",
       "Shown 64x48.png: To be rendered\nShown 32x24.png: To be rendered\n"},
      {"Hidden", "64x48", "7:8", "{state} {frame}",
       "Hidden 0007.png: To be rendered\nHidden 0008.png: To be rendered\n"},
      {"Hidden", "64x48", "7:8", "{state}", "Put {frame} into the pattern"},
      {"*", "64x48", "8:7", "{state} {frame}", "8:7"},
      {"*", "64x48", "", "{scene}", "would be written to one file"},
      {"*", "64x48", "", "{sta}", "{sta}"},
      {"*", "64", "", "{state}", "is no picture size"},
      {"*", "64x48", "", "{state}.tif", "names pictures of another format"},
      {"None*", "64x48", "", "{state}", "No Stagemark has such a name"},
  };
  for (const auto& row : kCases) {
    TwoShots::Type(window, "names", row.names);
    TwoShots::Type(window, "sizes", row.sizes);
    TwoShots::Type(window, "frames", row.frames);
    TwoShots::Type(window, "pattern", row.states);
    const std::string rows = TwoShots::Rows(window);
    const bool isRefused = std::string(row.rows).find('\n') == std::string::npos;
    EXPECT_TRUE(isRefused ? window.Said().contains(row.rows) : rows == row.rows)
        << row.names << "\n"
        << rows << window.Said().toStdString();
  }
  EXPECT_FALSE(fs::exists(desk.Out()));
}

TEST(RenderStates, AsksBeforeFilesOfOthersGoAndSaysWhatFails) {
  TwoShots desk;
  fs::create_directory(desk.Out());
  tests::WriteText(desk.Out() + "/Untitled Shown.png", "mine");
  RenderStatesWindow& window = desk.Open();
  EXPECT_NE(TwoShots::Rows(window).find("Another file stands there"), std::string::npos);
  desk::AnswerNext<QDialog>([](QDialog& box) { box.reject(); });
  TwoShots::Press(window, "Render");
  EXPECT_TRUE(window.IsFinished());
  EXPECT_EQ(desk.FilesThere(), "Untitled Shown.png ");
  TwoShots::Type(window, "folder", desk.Out() + "/Untitled Shown.png");
  TwoShots::Rows(window);
  TwoShots::Press(window, "Render");
  ASSERT_TRUE(TwoShots::Finishes(window));
  EXPECT_TRUE(window.Said().contains("Untitled Shown.png")) << window.Said().toStdString();
  // It stays to be read.
  Desk::Rest();
  EXPECT_TRUE(window.IsFinished());
  EXPECT_TRUE(window.Said().contains("Untitled Shown.png")) << window.Said().toStdString();
  TwoShots::Type(window, "folder", "here");
  TwoShots::Press(window, "Render");
  EXPECT_TRUE(window.Said().startsWith("Choose a folder")) << window.Said().toStdString();
  EXPECT_EQ(tests::ReadText(desk.Out() + "/Untitled Shown.png"), "mine");
}

TEST(RenderStates, StoppedInAPictureLeavesNothingOfIt) {
  TwoShots desk;
  RenderStatesWindow& window = desk.Open();
  TwoShots::Type(window, "sizes", "6000x4000");
  TwoShots::Rows(window);
  TwoShots::Press(window, "Render");
  ASSERT_TRUE(QTest::qWaitFor(
      [&] {
        return !window.Rows().Rows().empty() && window.Rows().Rows()[0].result == Result::Rendering;
      },
      60000));
  TwoShots::Press(window, "Stop");
  EXPECT_TRUE(window.IsFinished());
  EXPECT_EQ(window.Said(), "Stopped; nothing was rendered.");
  EXPECT_EQ(desk.FilesThere(), "");
}

// Whatever it is at.
TEST(RenderStates, TheChildEndsWhenItIsAskedTo) {
  constexpr int kManyPictures = 40;
  const desk::WithCube desk;
  QProcess child;
  const auto send = [&](engine::FrameKind kind, std::string_view bytes) {
    const std::string frames = engine::AsFrames(kind, bytes);
    child.write(frames.data(), static_cast<qint64>(frames.size()));
  };
  child.start(TEST_BINARY_DIR "/bin/stagemarks", {worker::kStateWorkerVerb});
  send(engine::FrameKind::Note, "");
  const auto scene = engine::WriteScene(desk::Scene(), {});
  ASSERT_TRUE(scene);
  for (const std::string& piece : scene.Value()) send(engine::FrameKind::Scene, piece);
  send(engine::FrameKind::Done, "");
  for (int times = 0; times < kManyPictures; ++times)
    send(engine::FrameKind::Note, worker::RequestAsText({{2000, 2000}, ""}));
  engine::FrameParser parser;
  std::string told;
  const auto hears = [&](engine::FrameKind kind) {
    const QByteArray bytes = child.readAllStandardOutput();
    parser.Feed({bytes.data(), static_cast<std::size_t>(bytes.size())});
    while (const auto frame = parser.Next()) {
      told = frame->bytes;
      if (frame->kind == kind) return true;
    }
    return false;
  };
  ASSERT_TRUE(QTest::qWaitFor([&] { return hears(engine::FrameKind::Progress); }, 60000));
  child.terminate();
  ASSERT_TRUE(QTest::qWaitFor([&] { return hears(engine::FrameKind::Failure); }, 60000));
  EXPECT_EQ(told, "Stopped.");
  EXPECT_TRUE(QTest::qWaitFor([&] { return child.state() == QProcess::NotRunning; }, 60000));
}

TEST(RenderStates, OrdersAndNewsSurviveTheirTextsAndDamagedOnesAreRefused) {
  worker::PicturesOrder order;
  order.renders = true;
  order.pictures.states = {"", "B's \n%"};
  order.pictures.sizes = {"64x48"};
  order.pictures.pattern = "{state}";
  const std::string text = worker::PicturesAsText(order);
  ASSERT_TRUE(worker::PicturesFromText(text));
  EXPECT_EQ(worker::PicturesAsText(*worker::PicturesFromText(text)), text);
  worker::PictureNews news;
  news.kind = worker::PictureNews::Kind::Failed;
  news.text = "why";
  const std::string told = worker::NewsAsText(news);
  ASSERT_TRUE(worker::NewsFromText(told));
  EXPECT_EQ(worker::NewsAsText(*worker::NewsFromText(told)), told);
  for (std::size_t length = 0; length + 1 < text.size(); ++length)
    EXPECT_FALSE(worker::PicturesFromText(text.substr(0, length))) << length;
  for (std::size_t length = 0; length + 1 < told.size(); ++length) {
    const auto read = worker::NewsFromText(told.substr(0, length));
    EXPECT_TRUE(!read || read->text != "why") << length;
  }
  const std::string many = std::string("pictures") + '\0' + "1" + '\0' + "1" + '\0' + "1" + '\0' +
                           "18446744073709551615" + '\0' + "x" + '\0';
  EXPECT_FALSE(worker::PicturesFromText(many));
}

// Slurm as far as the window calls it: it takes every job, and says that it knows none.
class WithSlurm : public TwoShots {
 public:
  WithSlurm() : path_(qgetenv("PATH")) {
    const std::string folder = Folder() + "/slurm";
    fs::create_directory(folder);
    const auto command = [&](const char* name, const char* text) {
      tests::WriteText(folder + "/" + name, std::string("#!/bin/sh\n") + text + "\n");
      fs::permissions(folder + "/" + name, fs::perms::owner_all);
    };
    command("sbatch", ("echo \"$*\" >> '" + folder + "/calls'; echo 77").c_str());
    command("squeue", "echo 'slurm_load_jobs error: Invalid job id specified' >&2; exit 1");
    command("scancel", "exit 0");
    qputenv("PATH", QByteArray::fromStdString(folder) + ":" + path_);
  }
  ~WithSlurm() { qputenv("PATH", path_); }
  void SaveWhenAsked() {
    desk::AnswerNext<QMessageBox>([this](QMessageBox& box) {
      desk::ChooseInNextBox(Folder() + "/shot.c4d");
      box.button(QMessageBox::Save)->click();
    });
  }
  static bool Says(FarmWindow& window, const QString& text) {
    return QTest::qWaitFor([&] { return window.Said().contains(text); }, 60000);
  }

 private:
  QByteArray path_;
};

TEST(RenderStates, GoToTheFarmAndAreWatchedThere) {
  WithSlurm desk;
  RenderStatesWindow& states = desk.Open();
  TwoShots::Type(states, "frames", "0:1");
  TwoShots::Type(states, "names", "{scene} {state} {frame}");
  TwoShots::Rows(states);
  desk.SaveWhenAsked();
  TwoShots::Press(states, "On the Farm...");
  auto& window = TwoShots::Opened<FarmWindow>();
  TwoShots::Press(window, "Submit");
  ASSERT_TRUE(WithSlurm::Says(window, "4 pictures: 4 waiting")) << window.Said().toStdString();
  const std::string calls = tests::ReadText(desk.Folder() + "/slurm/calls");
  EXPECT_NE(calls.find("--array=0-"), std::string::npos) << calls;
  EXPECT_TRUE(window.Said().contains("Nobody is going to do 4")) << window.Said().toStdString();
  // The job can be handed over again. Then a machine does it, of which Slurm knows nothing.
  TwoShots::Press(window, "Retry");
  ASSERT_TRUE(WithSlurm::Says(window, "4 pictures: 4 waiting")) << window.Said().toStdString();
  const QString job = QString::fromStdString(desk.Folder() + "/farm/jobs/") + window.Job();
  EXPECT_EQ(QProcess::execute(TEST_BINARY_DIR "/bin/stagemarks", {"farm", "run", job, "--quiet"}),
            0);
  EXPECT_FALSE(window.IsWatching());
  QEvent back(QEvent::ActivationChange);
  QApplication::setActiveWindow(&window);
  QApplication::sendEvent(&window, &back);
  ASSERT_TRUE(WithSlurm::Says(window, "4 pictures: 4 done")) << window.Said().toStdString();
  const auto& table = *window.findChild<QTreeWidget*>();
  EXPECT_EQ(table.topLevelItemCount(), 2);
  EXPECT_EQ(table.topLevelItem(0)->text(0) + table.topLevelItem(0)->text(3), "Hidden2");
  EXPECT_TRUE(fs::exists(desk.Out() + "/shot Shown 0001.png"));
  EXPECT_TRUE(pictures::Write(window, "farm"));
  window.close();
  Desk::Rest();
  TwoShots::Press(states, "On the Farm...");
  auto& again = TwoShots::Opened<FarmWindow>();
  TwoShots::Press(again, "Show Latest Job");
  EXPECT_TRUE(WithSlurm::Says(again, "4 pictures: 4 done")) << again.Said().toStdString();
}

TEST(RenderStates, WhatTheFarmRefusesIsSaid) {
  WithSlurm desk;
  desk.SaveWhenAsked();
  RenderStatesWindow& states = desk.Open();
  TwoShots::Press(states, "On the Farm...");
  auto& window = TwoShots::Opened<FarmWindow>();
  TwoShots::Press(window, "Show Latest Job");
  EXPECT_TRUE(WithSlurm::Says(window, "There is no job in")) << window.Said().toStdString();
  tests::WriteText(desk.Folder() + "/file", "mine");
  TwoShots::Type(window, "farm", desk.Folder() + "/file/farm");
  TwoShots::Press(window, "Submit");
  EXPECT_TRUE(WithSlurm::Says(window, "/file")) << window.Said().toStdString();
  EXPECT_TRUE(window.Job().isEmpty());
}

// A farm window over a command line that says what the test has put down.
class WithFarmWindow : public desk::Desk {
 public:
  explicit WithFarmWindow(const std::string& program)
      : window(*new FarmWindow(&Window(), Services(), Folder() + "/shot.c4d", {}, program)) {
    window.show();
  }
  // As the command line would write it, with counts of pictures.
  void Put(const std::string& counts) const {
    tests::WriteText(Folder() + "/status", R"({"job": "shot", "pictures": 3, )" + counts + "}");
  }
  bool Look() const {
    window.ShowLatest();
    return QTest::qWaitFor([this] { return window.IsIdle(); }, 60000);
  }

  FarmWindow& window;
};

TEST(RenderStates, JobsAreWatchedForAsLongAsSomethingMayCome) {
  const tests::ScratchFolder program;
  const std::string path = program.Path() + "/program";
  const WithFarmWindow desk(path);
  tests::WriteText(path, "#!/bin/sh\n[ \"$2\" = status ] && exec cat '" + desk.Folder() +
                             "/status'\n" +
                             R"(echo '{"level": "error", "text": "Slurm is down."}' >&2; exit 1)");
  fs::permissions(path, fs::perms::owner_all);
  const struct {
    const char* counts;
    bool isWatched;
  } kCases[] = {
      {R"("waiting": 3)", true},
      {R"("done": 2, "running": 1)", true},
      {R"("done": 3)", false},
      {R"("done": 1, "failed": 2, "abandoned": 2)", false},
      {R"("done": 1, "failed": 1, "running": 1, "abandoned": 1)", true},
      {R"("waiting": 3, "abandoned": 3)", false},
      {R"("done": 2, "failed": 1)", true},  // it is being tried again
      {R"("done": 3, "scheduler": [{"state": "RUNNING", "tasks": 1}])", true},  // the report
  };
  for (const auto& row : kCases) {
    desk.Put(row.counts);
    ASSERT_TRUE(desk.Look());
    EXPECT_EQ(desk.window.IsWatching(), row.isWatched) << row.counts;
  }
  // Slurm's answer is shown, or the reason why there is none; so are the times that the work takes.
  desk.Put(R"-("done": 1, "running": 2, "secondsLeft": 75, "slurmJob": "7", "scheduler":
      [{"state": "PENDING (Resources)", "tasks": 2
}], "states": [{"state": "A", "done": 1,
      "milliseconds": 1250}, {"state": "B", "running": 2, "milliseconds": null}])-");
  ASSERT_TRUE(desk.Look());
  EXPECT_TRUE(desk.window.Said().contains("about 1 min 15 s left"))
      << desk.window.Said().toStdString();
  EXPECT_TRUE(desk.window.Said().contains("Slurm: 2 tasks PENDING (Resources)."));
  const auto& table = *desk.window.findChild<QTreeWidget*>();
  EXPECT_EQ(table.topLevelItem(0)->text(5) + table.topLevelItem(1)->text(5), "1.3 s-");
  desk.Put(R"("waiting": 3, "unasked": "Slurm does not answer.")");
  ASSERT_TRUE(desk.Look());
  EXPECT_TRUE(desk.window.Said().contains("Slurm does not answer."));
  // An error from a command does not end the watching, and stands beside the next status.
  desk.Put(R"("done": 2, "failed": 1)");
  for (void (FarmWindow::*const command)() : {&FarmWindow::Retry, &FarmWindow::Collect}) {
    ASSERT_TRUE(desk.Look());
    (desk.window.*command)();
    EXPECT_TRUE(WithSlurm::Says(desk.window, "1 failed")) << desk.window.Said().toStdString();
    EXPECT_TRUE(desk.window.Said().contains("Slurm is down."));
    EXPECT_TRUE(desk.window.IsWatching());
  }
}

TEST(RenderStates, AFarmThatCannotBeCalledLeavesTheWindowInUse) {
  const WithFarmWindow desk("/nowhere/program");
  for (int times = 0; times < 2; ++times) {
    TwoShots::Press(desk.window, "Submit");
    EXPECT_TRUE(WithSlurm::Says(desk.window, "cannot be run")) << desk.window.Said().toStdString();
    TwoShots::Press(desk.window, "Show Latest Job");
    EXPECT_TRUE(WithSlurm::Says(desk.window, "cannot be run"));
    EXPECT_TRUE(desk.window.findChild<QLineEdit*>("farm")->isEnabled());
  }
}

}  // namespace
