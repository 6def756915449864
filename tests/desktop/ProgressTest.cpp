// Long work within one call on the main thread: its box, the button in it, and that nothing else
// comes of what happens meanwhile.
#include <gtest/gtest.h>

#include <QDeadlineTimer>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QProgressDialog>
#include <QPushButton>
#include <QStatusBar>
#include <QtTest/QTest>
#include <filesystem>
#include <limits>

#include "engine/editing/Selection.h"
#include "engine/scene/SceneDump.h"
#include "engine/scenefile/SceneFile.h"
#include "host/BaseObject.h"
#include "program/desktop/background/DocumentBusy.h"
#include "program/desktop/background/Slices.h"
#include "program/desktop/render/SheetWindow.h"
#include "source/Stagemarks/keys/Gadgets.h"
#include "tests/desktop/Desk.h"
#include "tests/desktop/NoPatience.h"

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

// Sees the boxes of progress that come up, and acts on each.
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
  host::BaseDocument& Doc() { return *host::GetActiveDocument(); }
  void Record(const std::string& name) {
    engine::TypeText(*Dialog(), kNameField, host::String(std::string_view(name)));
    engine::PressButton(*Dialog(), kRecord);
  }
  static QProgressDialog* Box() {
    return qobject_cast<QProgressDialog*>(QApplication::activeModalWidget());
  }
  desk::NoPatience atOnce;
};

// Tells of work until the box shows that much of it: not each time is drawn.
void TellUntilShown(Desk& desk, double share, const std::string& what) {
  const QDeadlineTimer deadline(20000);
  do {
    EXPECT_TRUE(desk.Person().Progress(share, what));
    if (AtWork::Box() && AtWork::Box()->value() == share * AtWork::Box()->maximum()) return;
  } while (!deadline.hasExpired());
  FAIL() << "the box does not show " << share;
}

TEST(Progress, ComesUpTellsAndGoesWhenTheWorkIsOver) {
  AtWork desk;
  desktop::ProgressDialog::patience = std::numeric_limits<int>::max();
  EXPECT_TRUE(desk.Person().Progress(0, "Saving spider.c4d"));
  EXPECT_EQ(AtWork::Box(), nullptr) << "short work shows nothing";
  desktop::ProgressDialog::patience = 0;
  // Every part of the work begins with nothing done.
  EXPECT_TRUE(desk.Person().Progress(0, "Saving spider.c4d"));
  ASSERT_NE(AtWork::Box(), nullptr);
  TellUntilShown(desk, 0.5, "Saving " + std::string(300, 'x') + ".c4d");
  EXPECT_LT(AtWork::Box()->width(), 1000);
  std::filesystem::create_directories(TEST_BINARY_DIR "/pictures");
  EXPECT_TRUE(AtWork::Box()->grab().save(TEST_BINARY_DIR "/pictures/progress.png"));
  QApplication::processEvents();
  EXPECT_EQ(AtWork::Box(), nullptr) << "it is over without a last word";
}

TEST(Progress, LetsNothingElseHappenButTheButton) {
  AtWork desk;
  desk.Doc().AppendObject(host::BaseObject::Alloc(host::Ocube));
  engine::SelectAll(desk.Doc());
  Desk::Rest();
  const std::string before = engine::DumpState(desk.Doc());
  desktop::Slices reading("reading",
                          [] { return ADD_FAILURE() << "in the middle of work", false; });
  reading.Start();
  BoxWatch watch([&](QProgressDialog&) {
    QTest::keyClick(desk.Window().windowHandle(), Qt::Key_Delete);
    desk.Window().close();
    EXPECT_TRUE(desktop::IsDocumentBusy());
  });
  EXPECT_TRUE(desk.Person().Progress(0.1, "Working"));
  EXPECT_EQ(watch.Shown(), 1);
  EXPECT_EQ(engine::DumpState(desk.Doc()), before);
  EXPECT_TRUE(desk.Window().isVisible());
  reading.Stop();
  PressStop(*AtWork::Box());
  EXPECT_FALSE(desk.Person().Progress(0.2, "Working"));
  EXPECT_FALSE(desk.Person().Progress(0.3, "Working")) << "it stays stopped";
  Desk::Rest();
  EXPECT_EQ(watch.Shown(), 1);
  EXPECT_TRUE(desk.Person().Progress(0.1, "Other work")) << "which nobody stopped";
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
  const engine::SystemServices services;
  int scenes = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    if (!entry.is_regular_file()) continue;
    const auto scene = engine::OpenSceneFile(services.Get(), entry.path());
    EXPECT_TRUE(scene) << entry.path();
    if (scene) ++scenes;
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
  desktop::SheetWindow sheet(&desk.Window(), desk.Services(), desk.Doc(),
                             desk.Folder() + "/sheet.png");
  sheet.setAttribute(Qt::WA_DeleteOnClose, false);
  QString said;
  AnswerNext<QMessageBox>([&](QMessageBox& overwrite) {
    Desk::Rest();
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
  ASSERT_TRUE(pictures::WaitFor(isFinished));
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

// Silent acts of the plug-in are announced before they begin, where they may take a while.
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
