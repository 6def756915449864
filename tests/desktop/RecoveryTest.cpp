// Unsaved work outlives a crash: it is kept beside, offered at the next start, and never touches
// the file it came from. A window that goes without being closed is the crash.
#include <gtest/gtest.h>

#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QStatusBar>
#include <QtTest/QTest>
#include <filesystem>
#include <fstream>

#include "engine/scene/SceneDump.h"
#include "engine/scenefile/SceneFile.h"
#include "program/desktop/recovery/LostWork.h"
#include "tests/desktop/Desk.h"
#include "tests/desktop/Victim.h"

namespace {

namespace fs = std::filesystem;
using desk::AnswerNext;
using desk::Desk;
using tests::ReadText;

void AddObject(const char* name) {
  host::BaseObject* object = host::BaseObject::Alloc(host::Ocube);
  object->SetName(name);
  host::GetActiveDocument()->AppendObject(object);
}

struct Recovery : testing::Test {
  Desk desk;
  std::string path = desk.Folder() + "/room.c4d";
  std::string root = desktop::AutosaveRoot(desk.Services().folders);

  // A saved scene, with a change that is not saved but kept.
  void KeepAChange() {
    AddObject("Lamp");
    ASSERT_TRUE(desk.App().SaveDocumentAs(*host::GetActiveDocument(), path));
    AddObject("Unsaved");
    desk.Window().GetAutosave().KeepNow();
  }
  // Names of the scenes kept now.
  std::vector<std::string> Kept() const {
    std::vector<std::string> names;
    if (!fs::exists(root)) return names;
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
      if (entry.path().extension() == ".c4d") names.push_back(entry.path().string());
    }
    return names;
  }
  // Starts again after a crash and presses a button of the question; the text that was asked.
  std::string RestartAndPress(const char* button) {
    desk.Restart();
    std::string asked;
    AnswerNext([&](QDialog& dialog) {
      auto& box = dynamic_cast<QMessageBox&>(dialog);
      asked = (box.text() + "\n" + box.informativeText()).toStdString();
      EXPECT_TRUE(pictures::Write(box, "question-recovery"));
      for (QAbstractButton* each : box.buttons()) {
        if (each->text().remove('&') == button) return each->click();
      }
      box.reject();
    });
    desk.Window().OfferLostWork();
    Desk::Rest();
    return asked;
  }
};

TEST_F(Recovery, KeepingLeavesDocumentAndFileAlone) {
  KeepAChange();
  const std::string before = ReadText(path);
  host::BaseDocument& doc = *host::GetActiveDocument();
  ASSERT_EQ(Kept().size(), 1U);
  EXPECT_TRUE(doc.GetChanged());
  EXPECT_EQ((doc.GetDocumentPath() + doc.GetDocumentName()).GetString().ToUtf8(), path);
  EXPECT_EQ(ReadText(path), before);
  auto kept = engine::OpenSceneFile(desk.Services(), Kept()[0]);
  ASSERT_TRUE(kept) << kept.Message();
  kept.Value()->SetDocumentPath(doc.GetDocumentPath());
  kept.Value()->SetDocumentName(doc.GetDocumentName());
  EXPECT_EQ(engine::DumpDocument(*kept.Value()), engine::DumpDocument(doc));
  EXPECT_EQ(desk.Services().ledger.WrittenSince(0).back(), Kept()[0]);
}

TEST_F(Recovery, RecoveredWorkIsChangedAndItsFirstSavingAsksWhereTo) {
  KeepAChange();
  const std::string before = ReadText(path);
  const std::string scene = engine::DumpDocument(*host::GetActiveDocument());
  EXPECT_NE(RestartAndPress("Recover").find("room.c4d"), std::string::npos);
  ASSERT_EQ(desk.App().Documents().size(), 1U);
  host::BaseDocument& doc = *host::GetActiveDocument();
  EXPECT_EQ(engine::DumpDocument(doc), scene);
  EXPECT_TRUE(doc.GetChanged());
  ASSERT_EQ(Kept().size(), 1U) << "a second crash must not lose it";
  QString proposed;
  AnswerNext([&](QDialog& dialog) {
    proposed = dynamic_cast<QFileDialog&>(dialog).selectedFiles().value(0);
    dialog.reject();
  });
  EXPECT_FALSE(desk.Window().Commands().Save(doc));
  EXPECT_EQ(proposed.toStdString(), path);
  EXPECT_EQ(ReadText(path), before);
  AnswerNext([&](QDialog& dialog) {
    pictures::Settle();  // until it has selected what it proposes
    dialog.findChild<QLineEdit*>()->setText(QString::fromStdString(desk.Folder() + "/other.c4d"));
    QMetaObject::invokeMethod(&dialog, "accept");
  });
  EXPECT_TRUE(desk.Window().Commands().Save(doc));
  Desk::Rest();
  EXPECT_EQ(ReadText(path), before);
  EXPECT_TRUE(Kept().empty());
  AddObject("More");
  EXPECT_TRUE(desk.Window().Commands().Save(doc)) << "later savings do not ask";
}

TEST_F(Recovery, EveryWorkOfSeveralCrashesIsRecovered) {
  KeepAChange();
  desk.Restart();
  AddObject("Of a document without a file");
  desk.Window().GetAutosave().KeepNow();
  const std::string asked = RestartAndPress("Recover");
  EXPECT_NE(asked.find("room.c4d"), std::string::npos);
  EXPECT_NE(asked.find("Untitled"), std::string::npos);
  EXPECT_EQ(desk.App().Documents().size(), 2U);
  EXPECT_EQ(Kept().size(), 2U);
  EXPECT_EQ(std::distance(fs::directory_iterator(root), {}), 1)
      << "the folders of the crashed ones are gone";
}

TEST_F(Recovery, LaterOffersAgainAndDiscardDoesNot) {
  KeepAChange();
  EXPECT_NE(RestartAndPress("Later"), "");
  EXPECT_EQ(Kept().size(), 1U);
  EXPECT_FALSE(host::GetActiveDocument()->GetFirstObject());
  EXPECT_NE(RestartAndPress("Discard"), "");
  EXPECT_TRUE(Kept().empty());
  EXPECT_TRUE(fs::exists(path));
  desk.Window().OfferLostWork();  // a box would never be answered
}

TEST_F(Recovery, LiveWorkIsNotOffered) {
  KeepAChange();
  EXPECT_TRUE(desktop::LostWork(desk.Services()).Documents().empty());
  desk.Restart();
  const desktop::LostWork first(desk.Services());
  EXPECT_EQ(first.Documents().size(), 1U);
  EXPECT_TRUE(desktop::LostWork(desk.Services()).Documents().empty())
      << "another desktop offers it at this moment";
}

TEST_F(Recovery, SavingClosingUndoneAndEndingWellLeaveNothing) {
  KeepAChange();
  ASSERT_TRUE(desk.Window().Commands().Save(*host::GetActiveDocument()));
  Desk::Rest();
  EXPECT_TRUE(Kept().empty());
  AddObject("Again");
  desk.Window().GetAutosave().KeepNow();
  EXPECT_EQ(Kept().size(), 1U);
  AnswerNext(
      [](QDialog& box) { dynamic_cast<QMessageBox&>(box).button(QMessageBox::Discard)->click(); });
  EXPECT_TRUE(desk.Window().Commands().Close(*host::GetActiveDocument()));
  Desk::Rest();
  EXPECT_TRUE(Kept().empty());
  AddObject("In the next one");
  desk.Window().GetAutosave().KeepNow();
  AnswerNext(
      [](QDialog& box) { dynamic_cast<QMessageBox&>(box).button(QMessageBox::Discard)->click(); });
  EXPECT_TRUE(desk.Window().close());
  EXPECT_TRUE(fs::is_empty(root));
}

// An autosave whose seconds pass when the test says so.
class Seconds {
 public:
  explicit Seconds(const engine::Application& application)
      : autosave_(application, {}, [this] { return now_; }) {}
  ~Seconds() { autosave_.End(); }

  // A second goes by, at whose beginning something is done or nothing.
  void Pass(bool acts) {
    if (acts) {
      AddObject("Act");
      waits_.push_back(now_);
      last_ = now_;
    }
    autosave_.Follow();
    autosave_.Tick();
    if (autosave_.IsBusy()) {
      ++kept_;
      waits_.clear();
    }
    EXPECT_TRUE(pictures::WaitFor([&] { return !autosave_.IsBusy(); }));
    now_ += std::chrono::seconds(1);
  }
  // How long ago that was which would be lost now; 0 for nothing.
  int Lost() const { return waits_.empty() ? 0 : Since(waits_.front()); }
  int Idle() const { return Since(last_); }
  int Kept() const { return kept_; }

 private:
  int Since(desktop::Autosave::Clock::time_point then) const {
    return static_cast<int>(std::chrono::duration_cast<std::chrono::seconds>(now_ - then).count());
  }

  desktop::Autosave::Clock::time_point now_{std::chrono::hours(1)};
  desktop::Autosave::Clock::time_point last_ = now_;
  std::vector<desktop::Autosave::Clock::time_point> waits_;  // acts that are not kept
  int kept_ = 0;
  desktop::Autosave autosave_;
};

TEST_F(Recovery, WhatIsDoneIsKeptWithinSeconds) {
  Seconds work(desk.App());
  for (int i = 0; i < 30; ++i) work.Pass(false);
  EXPECT_EQ(work.Kept(), 0) << "nothing to keep";
  work.Pass(true);
  EXPECT_EQ(work.Kept(), 1) << "the first act at once";
  for (int i = 0; i < 60; ++i) {
    work.Pass(true);
    EXPECT_LE(work.Lost(), 30);
  }
  EXPECT_LE(work.Kept(), 5) << "not with every act";
  unsigned seed = 7;
  for (int i = 0; i < 300; ++i) {
    seed = seed * 1664525U + 1013904223U;
    // Stretches of work, and of looking at it.
    work.Pass(seed / 65536U % 100 < (i / 50 % 2 == 0 ? 70U : 10U));
    EXPECT_LE(work.Lost(), 30);
    EXPECT_TRUE(work.Idle() <= 10 || work.Lost() == 0);
  }
}

// Killed without a word, in the middle of whatever it does.
TEST_F(Recovery, AKilledDesktopLosesTheLastSecondsOnly) {
  for (int round = 1; round <= 10; ++round) {
    const std::string folder = desk.Folder() + "/victim" + std::to_string(round);
    const desk::Victim victim(folder);
    const int kept = victim.KillAfter(1 + round * 7 % 60);
    engine::UserFolders folders = desk.Services().folders;
    folders.state = folder;
    const engine::Services& own = desk.Services();
    const desktop::LostWork lost(
        {own.files, own.clock, own.person, own.ledger, folders, own.viewer});
    ASSERT_EQ(lost.Documents().size(), kept > 0 ? 1U : lost.Documents().size());
    if (lost.Documents().empty()) continue;
    const auto opened = engine::OpenSceneFile(own, lost.Documents()[0].files.scene);
    ASSERT_TRUE(opened) << opened.Message();
    int objects = 0;
    for (auto* each = opened.Value()->GetFirstObject(); each; each = each->GetNext()) ++objects;
    EXPECT_GE(objects, kept) << round;
  }
}

TEST_F(Recovery, APlaceThatCannotBeWrittenIsToldOnceInTheStatusLine) {
  fs::create_directories(fs::path(root).parent_path());
  std::ofstream(root) << "no folder";
  AddObject("Lamp");
  desk.Window().GetAutosave().KeepNow();
  const auto status = [&] { return desk.Window().statusBar()->currentMessage(); };
  EXPECT_TRUE(status().startsWith("Unsaved work cannot be kept")) << status().toStdString();
  desk.Window().statusBar()->clearMessage();
  AddObject("Chair");
  desk.Window().GetAutosave().KeepNow();
  EXPECT_EQ(status(), "");
  fs::remove(root);
  AddObject("Table");
  desk.Window().GetAutosave().KeepNow();
  EXPECT_EQ(Kept().size(), 1U) << "tried again, and it works";
  desk.Window().OfferLostWork();
}

TEST_F(Recovery, WhatIsDamagedIsToldAndStays) {
  KeepAChange();
  const std::string scene = Kept().at(0);
  std::ofstream(scene) << "damaged";
  std::ofstream(fs::path(scene).replace_extension("json")) << "{";
  std::string told;
  desk.Restart();
  AnswerNext([&](QDialog& box) {
    EXPECT_NE(dynamic_cast<QMessageBox&>(box).informativeText().indexOf("Untitled"), -1);
    dynamic_cast<QMessageBox&>(box).defaultButton()->click();
    AnswerNext([&](QDialog& next) {
      told = dynamic_cast<QMessageBox&>(next).text().toStdString();
      next.accept();
    });
  });
  desk.Window().OfferLostWork();
  EXPECT_NE(told.find(scene + ".damaged"), std::string::npos) << told;
  EXPECT_EQ(ReadText(scene + ".damaged"), "damaged");
  desk.Window().OfferLostWork();  // it is not offered again
}

}  // namespace
