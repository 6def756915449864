// Long work on the main thread: its box, the button in it, and that nothing else happens meanwhile.
#include <gtest/gtest.h>

#include <QDropEvent>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QMimeData>
#include <QProgressDialog>
#include <QPushButton>
#include <QStatusBar>
#include <QtTest/QTest>
#include <filesystem>

#include "engine/scene/SceneDump.h"
#include "engine/scenefile/SceneFile.h"
#include "host/BaseObject.h"
#include "program/desktop/render/SheetWindow.h"
#include "source/Stagemarks/keys/Gadgets.h"
#include "tests/desktop/Desk.h"

namespace {

using desk::AnswerNext;
using desk::Desk;
using stagemarks::kCheckAll;
using stagemarks::kDelete;
using stagemarks::kGenerateFiles;
using stagemarks::kGeneratePreview;
using stagemarks::kList;
using stagemarks::kLoad;
using stagemarks::kNameField;
using stagemarks::kRecord;

// Sees the boxes of progress that come up, and acts on each. Timers wait meanwhile.
class BoxWatch : public QObject {
 public:
  explicit BoxWatch(std::function<void(QProgressDialog&)> act = {}) : act_(std::move(act)) {
    qApp->installEventFilter(this);
  }
  int Shown() const { return shown_; }

 protected:
  bool eventFilter(QObject* receiver, QEvent* event) override {
    auto* box = event->type() == QEvent::Show ? qobject_cast<QProgressDialog*>(receiver) : nullptr;
    if (!box) return false;
    ++shown_;
    if (act_)
      QMetaObject::invokeMethod(
          box, [this, box] { act_(*box); }, Qt::QueuedConnection);
    return false;
  }

 private:
  std::function<void(QProgressDialog&)> act_;
  int shown_ = 0;
};

void PressStop(QProgressDialog& box) {
  QTest::mouseClick(box.findChild<QPushButton*>(), Qt::LeftButton);
}

struct AtWork : Desk {
  AtWork() { Person().patience = std::chrono::milliseconds(0); }
  host::BaseDocument& Doc() { return *host::GetActiveDocument(); }
  void Record(const std::string& name) {
    engine::TypeText(*Dialog(), kNameField, host::String(std::string_view(name)));
    engine::PressButton(*Dialog(), kRecord);
  }
  static QProgressDialog* Box() {
    return qobject_cast<QProgressDialog*>(QApplication::activeModalWidget());
  }
};

TEST(Progress, ComesUpTellsAndGoesWhenTheWorkIsOver) {
  AtWork desk;
  desk.Person().patience = std::chrono::milliseconds(30);
  EXPECT_TRUE(desk.Outside().Progress(0, "Saving spider.c4d"));
  EXPECT_EQ(AtWork::Box(), nullptr) << "short work shows nothing";
  QTest::qSleep(40);
  // Every part of the work begins with nothing done.
  EXPECT_TRUE(desk.Outside().Progress(0, "Saving spider.c4d"));
  ASSERT_NE(AtWork::Box(), nullptr);
  QTest::qSleep(50);
  EXPECT_TRUE(desk.Outside().Progress(0.5, "Saving " + std::string(300, 'x') + ".c4d"));
  EXPECT_EQ(AtWork::Box()->value(), AtWork::Box()->maximum() / 2);
  EXPECT_LT(AtWork::Box()->width(), 1000);
  std::filesystem::create_directories(TEST_BINARY_DIR "/pictures");
  EXPECT_TRUE(AtWork::Box()->grab().save(TEST_BINARY_DIR "/pictures/progress.png"));
  QApplication::processEvents();
  EXPECT_EQ(AtWork::Box(), nullptr) << "it is over without a last word";
}

// The toolkit drops only what was taken when it came in.
bool TakesDrops(QWidget& window) {
  QMimeData dropped;
  dropped.setUrls({QUrl::fromLocalFile(TEST_SOURCE_DIR "/scenes/spider/spider.obj")});
  QDragEnterEvent enter({9, 9}, Qt::CopyAction, &dropped, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(&window, &enter);
  return enter.isAccepted();
}

TEST(Progress, LetsNothingElseHappenButTheButton) {
  AtWork desk;
  int turns = 0;
  QTimer timer;
  QObject::connect(&timer, &QTimer::timeout, &timer, [&] { ++turns; });
  timer.start(0);
  int finished = 0;
  auto* field = new QLineEdit(desk.Window().centralWidget());
  QObject::connect(field, &QLineEdit::editingFinished, field, [&] { ++finished; });
  field->show();
  desk.Window().activateWindow();
  field->setFocus();
  Desk::Rest();
  const std::size_t documents = desk.App().Documents().size();
  turns = finished = 0;
  bool droppable = true;
  BoxWatch watch([&](QProgressDialog&) {
    droppable = TakesDrops(desk.Window());
    desk.Window().close();
  });
  EXPECT_TRUE(desk.Outside().Progress(0.1, "Working"));
  EXPECT_EQ(watch.Shown(), 1);
  EXPECT_EQ(turns, 0) << "a timer fired in the middle of the work";
  EXPECT_EQ(finished, 0) << "typing ended in the middle of the work";
  EXPECT_FALSE(droppable) << "a drop would open something in the middle of the work";
  EXPECT_EQ(desk.App().Documents().size(), documents);
  EXPECT_TRUE(desk.Window().isVisible());
  PressStop(*AtWork::Box());
  EXPECT_FALSE(desk.Outside().Progress(0.2, "Working"));
  EXPECT_FALSE(desk.Outside().Progress(0.3, "Working")) << "it stays stopped";
  Desk::Rest();
  EXPECT_GT(turns, 0);
  EXPECT_EQ(watch.Shown(), 1);
  EXPECT_TRUE(desk.Outside().Progress(0.1, "Other work")) << "which nobody stopped";
}

// Answers what an export asks, and what it says at its end when it `isTold` of a stop.
void AnswerExport(const std::string& folder, bool isTold) {
  AnswerNext<QMessageBox>([folder, isTold](QMessageBox& overwritten) {
    AnswerNext<QFileDialog>([folder, isTold](QFileDialog& chooser) {
      if (isTold) AnswerNext<QMessageBox>([](QMessageBox& told) { told.accept(); });
      chooser.setDirectory(QString::fromStdString(folder));
      chooser.findChild<QLineEdit*>()->setText(QString::fromStdString(folder));
      QMetaObject::invokeMethod(&chooser, "accept");
    });
    overwritten.accept();
  });
}

// How many files there are below a folder; each is a scene that can be opened.
int CountScenes(const std::string& folder) {
  int scenes = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    if (!entry.is_regular_file()) continue;
    const auto scene = engine::OpenSceneFile(entry.path());
    EXPECT_TRUE(scene) << entry.path();
    if (!scene) continue;
    host::BaseDocument* doc = scene.Value();
    host::BaseDocument::Free(doc);
    ++scenes;
  }
  return scenes;
}

TEST(Progress, OfAnExportIsOneAndStoppingItLeavesWholeFiles) {
  AtWork desk;
  desk.Doc().AppendObject(host::BaseObject::Alloc(host::Ocube));
  for (int i = 0; i < 30; ++i) desk.Record("State " + std::to_string(i));
  engine::ChooseMenu(*desk.Dialog(), kCheckAll);
  const std::string before = engine::DumpState(desk.Doc());
  for (const bool stops : {false, true}) {
    const std::string folder = desk.Folder() + (stops ? "/stopped" : "/whole");
    std::filesystem::create_directory(folder);
    AnswerExport(folder, stops);
    BoxWatch watch([&](QProgressDialog& box) {
      if (stops) PressStop(box);
    });
    engine::PressButton(*desk.Dialog(), kGenerateFiles);
    Desk::Rest();
    EXPECT_EQ(watch.Shown(), 1);
    EXPECT_EQ(CountScenes(folder), stops ? 0 : 30);
    EXPECT_EQ(desk.App().Documents().size(), 1U);
    EXPECT_EQ(engine::DumpState(desk.Doc()), before);
  }
}

TEST(Progress, OfAPreviewIsGoneRightAfterIt) {
  AtWork desk;
  desk.Doc().AppendObject(host::BaseObject::Alloc(host::Ocube));
  ASSERT_TRUE(desk.App().SaveDocumentAs(desk.Doc(), desk.Folder() + "/scene.c4d").Ok());
  QApplication::processEvents();
  engine::SetCheckbox(*desk.Dialog(), kGeneratePreview, true);
  const BoxWatch watch;
  desk.Record("Seen");
  EXPECT_EQ(watch.Shown(), 1);
  EXPECT_TRUE(std::filesystem::exists(desk.Folder() + "/scene_SM/Seen.tif"));
  QApplication::processEvents();
  EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

// The contact sheet copies the scene, which a plug-in may be in the middle of changing.
TEST(Progress, TheSheetWaitsForADialogThatAsks) {
  AtWork desk;
  desk.Doc().AppendObject(host::BaseObject::Alloc(host::Ocube));
  desk.Record("One");
  desktop::SheetWindow sheet(&desk.Window(), desk.Doc(), desk.Folder() + "/sheet.png");
  sheet.setAttribute(Qt::WA_DeleteOnClose, false);
  QString said;
  AnswerNext<QMessageBox>([&](QMessageBox& overwrite) {
    pictures::Settle(200);
    said = sheet.Said();
    overwrite.button(QMessageBox::Yes)->click();
  });
  desk.Record("One");
  EXPECT_EQ(said, "Reading the states");
  std::size_t most = 0;
  const auto isFinished = [&] {
    most = std::max(most, desk.App().Documents().size());
    return sheet.IsFinished();
  };
  ASSERT_TRUE(QTest::qWaitFor(isFinished, 60000));
  EXPECT_EQ(most, 1U) << "nobody sees the copies that it reads";
  EXPECT_TRUE(sheet.Said().startsWith("Written")) << sheet.Said().toStdString();
}

void ChooseInDialogMenu(Desk& desk, const QString& text) {
  for (QAction* menu : desk.Window().Docks().ViewOf(*desk.Dialog())->Menus().actions()) {
    for (QAction* entry : menu->menu()->actions()) {
      if (entry->text() == text) entry->trigger();
    }
  }
}

// What the plug-in does without a word is announced before it begins, where it may take a while.
TEST(Progress, OfActsThatSayNothingIsTheirNameAndAWaitingPointer) {
  AtWork desk;
  QStringList said;
  QObject::connect(
      desk.Window().statusBar(), &QStatusBar::messageChanged, [&](const QString& text) {
        const QCursor* pointer = QGuiApplication::overrideCursor();
        said += text + (pointer && pointer->shape() == Qt::WaitCursor ? " (waits)" : "");
      });
  const auto actAndHear = [&](const std::function<void()>& act) {
    said.clear();
    act();
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
    EXPECT_FALSE(desk.Window().statusBar()->currentMessage().contains(QChar(0x2026)))
        << "what came of it stands there now";
    return said.filter(QChar(0x2026));
  };
  const auto load = [&] { desk.Gadget<QPushButton>(kLoad).click(); };
  const auto update = [&] { ChooseInDialogMenu(desk, "Update Checked Elements"); };
  desk.Record("One");
  engine::SelectLines(*desk.Dialog(), kList, {0});
  Desk::Rest();
  EXPECT_EQ(actAndHear(load), QStringList()) << "over before anybody could read it";
  for (int i = 0; i < 100000; ++i) desk.Doc().AppendObject(host::BaseObject::Alloc(host::Onull));
  EXPECT_EQ(actAndHear(load), QStringList({"Load\u2026 (waits)"}));
  EXPECT_EQ(actAndHear(update), QStringList({"Update Checked Elements\u2026 (waits)"}));

  // Whoever is asked something has a pointer to answer with.
  engine::SelectLines(*desk.Dialog(), kList, {0});
  bool waits = true;
  AnswerNext<QMessageBox>([&](QMessageBox& question) {
    waits = QGuiApplication::overrideCursor()->shape() == Qt::WaitCursor;
    question.button(QMessageBox::No)->click();
  });
  actAndHear([&] { desk.Gadget<QPushButton>(kDelete).click(); });
  EXPECT_FALSE(waits);
}

}  // namespace
