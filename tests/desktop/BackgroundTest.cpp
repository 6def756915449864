// Edits in slices and work on other threads: that the window lives meanwhile, that everything is
// as before when they are stopped, and that no exception gets away.
#include <gtest/gtest.h>

#include <QMessageBox>
#include <QProgressDialog>
#include <QPushButton>
#include <QThread>
#include <QtTest/QTest>
#include <atomic>
#include <stdexcept>

#include "engine/editing/ObjectCommands.h"
#include "engine/editing/Selection.h"
#include "engine/scene/SceneDump.h"
#include "engine/undo/Undo.h"
#include "host/BaseObject.h"
#include "program/desktop/background/BackgroundJob.h"
#include "program/desktop/background/DocumentBusy.h"
#include "program/desktop/background/SlicedEdit.h"
#include "program/desktop/background/Slices.h"
#include "tests/desktop/Desk.h"
#include "tests/desktop/NoPatience.h"

namespace {

using desk::AnswerNext;
using desk::Desk;

// A scene whose objects get names, one with each step.
struct Sliced : Desk {
  Sliced() {
    for (int i = 0; i < 50; ++i) Doc().AppendObject(host::BaseObject::Alloc(host::Ocube));
    engine::SelectAll(Doc());
    Rest();
    before = engine::DumpState(Doc());
  }
  static host::BaseDocument& Doc() { return *host::GetActiveDocument(); }
  static bool IsAsBefore(const std::string& before) {
    return engine::DumpState(Doc()) == before && !engine::CanUndo(Doc()) && !engine::CanRedo(Doc());
  }
  // `failing`: the step that throws.
  void Begin(int failing = -1) {
    objects = engine::SelectedObjects(Doc());
    desktop::RunEdit(Doc(),
                     {"Name All",
                      objects.size(),
                      [this, failing](std::size_t i) {
                        if (static_cast<int>(i) == failing) throw std::runtime_error("broken");
                        Doc().AddUndo(host::UNDO_CHANGE, objects[i]);
                        objects[i]->SetName("Named");
                        ++steps;
                      },
                      {}},
                     [this](bool whole) { ended = whole; });
  }
  static QProgressDialog* Box() {
    return qobject_cast<QProgressDialog*>(QApplication::activeModalWidget());
  }

  std::vector<host::BaseObject*> objects;
  std::size_t steps = 0;
  std::string before;
  std::optional<bool> ended;
};

TEST(SlicedEdit, AShortOneIsDoneAtOnce) {
  Sliced desk;
  desktop::ProgressDialog::patience = 60000;
  desk.Begin();
  desktop::ProgressDialog::patience = 60;
  EXPECT_EQ(desk.ended, std::optional(true));
  EXPECT_EQ(engine::DoneNames(Sliced::Doc()), std::vector<std::string>{"Name All"});
}

TEST(SlicedEdit, ALongOneLetsOnlyItsBoxBeUsed) {
  Sliced desk;
  const desk::NoPatience slices;
  desk.Begin();
  EXPECT_LT(desk.steps, 2U) << "the rest is done in the event loop";
  ASSERT_NE(Sliced::Box(), nullptr);
  EXPECT_TRUE(desktop::IsDocumentBusy());
  std::size_t waited = 0;
  desktop::WhenDocumentIsFree(qApp, [&] { waited = desk.steps; });
  QTest::keyClick(desk.Window().windowHandle(), Qt::Key_Delete);
  desktop::RunEdit(Sliced::Doc(), engine::DeleteSelected(Sliced::Doc()),
                   [](bool whole) { EXPECT_FALSE(whole) << "an edit in the middle of another"; });
  ASSERT_TRUE(pictures::WaitFor([&] { return desk.ended.has_value() && waited > 0; }));
  EXPECT_EQ(desk.ended, std::optional(true));
  EXPECT_EQ(waited, desk.objects.size());
  EXPECT_EQ(engine::DoneNames(Sliced::Doc()), std::vector<std::string>{"Name All"});
  EXPECT_EQ(engine::SelectedObjects(Sliced::Doc()).size(), 50U);
  EXPECT_EQ(Sliced::Box(), nullptr);
  EXPECT_TRUE(Sliced::Doc().DoUndo());
  EXPECT_EQ(engine::DumpState(Sliced::Doc()), desk.before);
}

TEST(SlicedEdit, StoppedFailedOrClosedItLeavesEverythingAsBefore) {
  const struct {
    const char* name;
    int failing;
    std::function<void(Sliced&)> end;
  } cases[] = {
      {"the button", -1,
       [](Sliced&) {
         QTest::mouseClick(Sliced::Box()->findChild<QPushButton*>(), Qt::LeftButton);
       }},
      {"an exception", 20,
       [](Sliced&) {
         AnswerNext<QMessageBox>([](auto& box) {
           EXPECT_TRUE(box.text().contains("\"Name All\", which was taken back: broken"));
           box.accept();
         });
       }},
      {"closing", -1,
       [](Sliced& desk) {
         AnswerNext<QMessageBox>([](auto& box) { box.button(QMessageBox::Discard)->click(); });
         EXPECT_TRUE(desk.Window().close());
       }},
  };
  for (const auto& each : cases) {
    Sliced desk;
    const desk::NoPatience slices;
    desk.Begin(each.failing);
    ASSERT_NE(Sliced::Box(), nullptr) << each.name;
    each.end(desk);
    ASSERT_TRUE(pictures::WaitFor([&] { return desk.ended.has_value(); })) << each.name;
    EXPECT_EQ(desk.ended, std::optional(false)) << each.name;
    EXPECT_TRUE(Sliced::IsAsBefore(desk.before)) << each.name;
    EXPECT_FALSE(desktop::IsDocumentBusy()) << each.name;
  }
}

TEST(BackgroundJob, TellsOnTheMainThreadHowItGoesAndHowItEnded) {
  const struct {
    std::function<void()> failing;
    const char* problem;
  } cases[] = {
      {[] {}, ""},
      {[] { throw std::runtime_error("broken"); }, "An error ended the test: broken"},
      {[] { throw std::bad_alloc(); }, "There is not enough memory for the test."},
  };
  for (const auto& each : cases) {
    desktop::BackgroundJob job("the test");
    std::vector<int> told;
    std::optional<std::string> problem;
    job.Start(
        [&](const desktop::BackgroundJob::Control& control) {
          EXPECT_NE(QThread::currentThread(), qApp->thread());
          for (int i = 0; i < 3; ++i) control.OnMainThread([&told, i] { told.push_back(i); });
          each.failing();
        },
        [&](const std::string& text) {
          EXPECT_EQ(told, (std::vector<int>{0, 1, 2}));
          problem = text;
        });
    EXPECT_TRUE(job.IsRunning());
    ASSERT_TRUE(pictures::WaitFor([&] { return problem.has_value(); }));
    EXPECT_EQ(*problem, each.problem);
    EXPECT_FALSE(job.IsRunning());
  }
}

TEST(BackgroundJob, StopsWhenAskedAndWhenItsOwnerGoes) {
  std::atomic<int> ended = 0;
  const auto untilStopped = [&](const desktop::BackgroundJob::Control& control) {
    while (!control.IsStopped()) QThread::yieldCurrentThread();
    ++ended;
  };
  int told = 0;
  {
    desktop::BackgroundJob job("the test");
    job.Start(untilStopped, [&](const std::string&) { ++told; });
    job.Stop();
    job.Finish();
    EXPECT_EQ(told, 1);
    // More than the machine has threads at a time.
    std::vector<std::unique_ptr<desktop::BackgroundJob>> many;
    for (int i = 0; i < 16; ++i) {
      many.push_back(std::make_unique<desktop::BackgroundJob>("the test"));
      many.back()->Start(untilStopped, [&](const std::string&) { ++told; });
    }
    job.Start(untilStopped, [&](const std::string&) { ++told; });
  }
  Desk::Rest();
  EXPECT_EQ(ended, 18);
  EXPECT_EQ(told, 1) << "who is gone hears nothing";
}

}  // namespace
