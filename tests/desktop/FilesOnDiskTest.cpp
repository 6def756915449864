// Changes by another program to the files of open documents: noticed on coming back, on turning to
// the document and before saving.
#include <gtest/gtest.h>

#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QStatusBar>
#include <QtTest/QTest>
#include <filesystem>
#include <fstream>

#include "engine/scenefile/SceneFile.h"
#include "host/BaseObject.h"
#include "tests/desktop/States.h"

namespace {

using desk::AnswerNext;
using desk::Desk;

struct OnDisk : Desk {
  std::string file = Folder() + "/room.c4d";
  int asked = 0;

  OnDisk() {
    Add("Mine");
    EXPECT_TRUE(App().SaveDocumentAs(Doc(), file));
    Rest();
  }
  host::BaseDocument& Doc() { return *host::GetActiveDocument(); }
  void Add(const char* name) {
    host::BaseObject* object = host::BaseObject::Alloc(host::Onull);
    object->SetName(name);
    Doc().AppendObject(object);
    Doc().SetChanged();
    host::EventAdd();
  }
  // Another program writes its own scene there.
  void ChangeFile(const char* name = "Theirs") {
    const engine::OwnedDocument theirs(host::BaseDocument::Alloc());
    host::BaseObject* object = host::BaseObject::Alloc(host::Onull);
    object->SetName(name);
    theirs->AppendObject(object);
    EXPECT_TRUE(engine::SaveSceneFile(Services(), *theirs, file));
  }
  std::string InFile(const std::string& path) {
    auto doc = engine::OpenSceneFile(Services(), path);
    return doc ? doc.Value()->GetFirstObject()->GetName().ToUtf8() : doc.Message();
  }
  std::string Shown() { return Doc().GetFirstObject()->GetName().ToUtf8(); }
  // A person goes to another program and comes back.
  void ComeBack() {
    QEvent event(QEvent::ActivationChange);
    QApplication::sendEvent(&Window(), &event);
    Rest();
    EXPECT_TRUE(QTest::qWaitFor([] { return !QApplication::activeModalWidget(); }, 20000));
    Rest();
  }
  // Presses the button whose text begins so in the next question; empty: Enter.
  void Answer(const QString& button, std::function<void()> meanwhile = {}) {
    AnswerNext<QMessageBox>([this, button, meanwhile](QMessageBox& box) {
      ++asked;
      EXPECT_TRUE(box.text().contains("room.c4d")) << box.text().toStdString();
      EXPECT_EQ(box.icon(), QMessageBox::Warning);
      EXPECT_TRUE(pictures::Write(box, "question-changed-on-disk"));
      if (meanwhile) meanwhile();
      if (button.isEmpty()) return QTest::keyClick(&box, Qt::Key_Return);
      for (QAbstractButton* one : box.buttons()) {
        if (one->text().remove('&').startsWith(button)) return one->click();
      }
      ADD_FAILURE() << button.toStdString();
      box.reject();
    });
  }
};

TEST(FilesOnDisk, ReloadShowsWhatAnotherProgramWrote) {
  OnDisk desk;
  desk.ChangeFile();
  desk.Answer("");
  desk.ComeBack();
  EXPECT_EQ(desk.asked, 1);
  EXPECT_EQ(desk.Shown(), "Theirs");
  EXPECT_EQ(desk.App().Documents().size(), 1U);
  EXPECT_FALSE(desk.Doc().GetChanged());
  desk.ComeBack();
  EXPECT_TRUE(desk.Window().Commands().Save(desk.Doc()));
  EXPECT_EQ(desk.asked, 1);
}

TEST(FilesOnDisk, KeepMineWritesOverItWithTheNextSaving) {
  OnDisk desk;
  desk.Add("More of mine");
  desk.ChangeFile();
  desk.Answer("Keep Mine");
  desk.ComeBack();
  EXPECT_EQ(desk.InFile(desk.file), "Theirs");
  EXPECT_TRUE(desk.Doc().GetChanged());
  EXPECT_TRUE(desk.Window().Commands().Save(desk.Doc()));
  EXPECT_EQ(desk.InFile(desk.file), "Mine");
  EXPECT_EQ(desk.asked, 1);
}

TEST(FilesOnDisk, RevertChangesPlacesWithTheVersionBefore) {
  OnDisk desk;
  const auto revert = [&](const QString& button) {
    QAction& entry = desk.Entry("File", "Revert to Previous");
    if (!entry.isEnabled()) return false;
    AnswerNext<QMessageBox>([&](QMessageBox& box) {
      EXPECT_TRUE(pictures::Write(box, "question-revert"));
      EXPECT_EQ(box.informativeText().contains("are lost"), desk.Doc().GetChanged());
      for (QAbstractButton* one : box.buttons()) {
        if (one->text().remove('&').startsWith(button)) one->click();
      }
    });
    entry.trigger();
    Desk::Rest();
    return true;
  };
  EXPECT_FALSE(revert("Revert")) << "nothing was replaced yet";
  desk.Doc().GetFirstObject()->SetName("Second");
  EXPECT_TRUE(desk.Window().Commands().Save(desk.Doc()));
  EXPECT_TRUE(revert("Cancel"));
  EXPECT_EQ(desk.Shown(), "Second");
  desk.Doc().GetFirstObject()->SetName("Not saved");
  desk.Doc().SetChanged();
  EXPECT_TRUE(revert("Revert"));
  EXPECT_EQ(desk.Shown() + ", " + desk.InFile(desk.file), "Mine, Mine");
  EXPECT_EQ(desk.App().Documents().size(), 1U);
  EXPECT_TRUE(revert("Revert"));
  EXPECT_EQ(desk.Shown() + ", " + desk.InFile(desk.file), "Second, Second");
  desk.Window().Commands().KeepPrevious(engine::FormerPlace::Beside);
  desk.Doc().GetFirstObject()->SetName("Third");
  EXPECT_TRUE(desk.Window().Commands().Save(desk.Doc()));
  EXPECT_EQ(desk.InFile(desk.file + "~"), "Second");
}

TEST(FilesOnDisk, LaterAsksAgainBeforeSavingAndEnterLosesNothing) {
  OnDisk desk;
  desk.Add("More of mine");
  desk.ChangeFile();
  desk.Answer("Later");
  desk.ComeBack();
  desk.ComeBack();
  EXPECT_EQ(desk.asked, 1) << "once for each change";
  desk.Answer("Cancel");
  EXPECT_FALSE(desk.Window().Commands().Save(desk.Doc()));
  EXPECT_EQ(desk.InFile(desk.file), "Theirs");
  bool choosing = false;
  desk.Answer("", [&] {
    AnswerNext<QFileDialog>([&](QFileDialog& chooser) {
      choosing = chooser.acceptMode() == QFileDialog::AcceptSave;
      chooser.reject();
    });
  });
  EXPECT_FALSE(desk.Window().Commands().Save(desk.Doc()));
  EXPECT_TRUE(choosing) << "Enter means Save As";
  EXPECT_EQ(desk.asked, 3);
  EXPECT_EQ(desk.InFile(desk.file), "Theirs");
  EXPECT_TRUE(desk.Doc().GetChanged());
}

TEST(FilesOnDisk, SaveAsLeavesTheFileToTheOtherAndWritesASecond) {
  for (const bool saves : {true, false}) {
    OnDisk desk;
    desk.Add("More of mine");
    desk.ChangeFile();
    desk.Answer("Save As", [&] {
      AnswerNext<QFileDialog>([&](QFileDialog& chooser) {
        EXPECT_EQ(chooser.acceptMode(), QFileDialog::AcceptSave);
        auto* field = chooser.findChild<QLineEdit*>("fileNameEdit");
        field->selectAll();
        QTest::keyClicks(field, "mine");
        QTest::keyClick(field, Qt::Key_Return);
        if (QWidget* box = QApplication::activeModalWidget(); box != &chooser && box) {
          auto* question = qobject_cast<QMessageBox*>(box);
          ADD_FAILURE() << (question ? question->text().toStdString()
                                     : box->metaObject()->className());
        }
      });
    });
    if (saves) desk.Window().Commands().Save(desk.Doc());
    if (!saves) desk.ComeBack();
    const std::string second = desk.Folder() + "/mine.c4d";
    EXPECT_EQ(desk.InFile(second), "Mine");
    EXPECT_EQ(desk.InFile(desk.file), "Theirs");
    EXPECT_FALSE(desk.Doc().GetChanged());
    EXPECT_EQ(desk.asked, 1);
  }
}

TEST(FilesOnDisk, WhatChangesWhileOneIsAskedIsAskedAboutAgain) {
  OnDisk desk;
  desk.ChangeFile();
  desk.Answer("Keep Mine", [&] {
    desk.ChangeFile("Theirs, second");
    desk.Answer("Cancel");
  });
  EXPECT_FALSE(desk.Window().Commands().Save(desk.Doc()));
  EXPECT_EQ(desk.asked, 2);
  EXPECT_EQ(desk.InFile(desk.file), "Theirs, second");
}

TEST(FilesOnDisk, AFileThatIsGoneIsSaidAndWrittenAgain) {
  OnDisk desk;
  std::filesystem::remove(desk.file);
  desk.ComeBack();
  EXPECT_TRUE(desk.Window().statusBar()->currentMessage().contains("not there any more"));
  EXPECT_TRUE(desk.Doc().GetChanged()) << "closing asks";
  EXPECT_TRUE(desk.Window().Commands().Save(desk.Doc()));
  EXPECT_EQ(desk.InFile(desk.file), "Mine");
}

TEST(FilesOnDisk, EachDocumentIsAskedAboutWhenOneTurnsToIt) {
  OnDisk desk;
  host::BaseDocument& room = desk.Doc();
  desk.Entry("File", "New").trigger();
  Desk::Rest();
  desk.ChangeFile();
  desk.ComeBack();
  EXPECT_EQ(desk.asked, 0);
  desk.Answer("Reload");
  host::SetActiveDocument(&room);
  host::EventAdd();
  Desk::Rest();
  Desk::Rest();
  EXPECT_EQ(desk.asked, 1);
  EXPECT_EQ(desk.Shown(), "Theirs");
}

TEST(FilesOnDisk, ADamagedFileDoesNotReplaceWhatIsOpen) {
  OnDisk desk;
  std::ofstream(desk.file) << "no scene";
  QString told;
  desk.Answer("Reload", [&] {
    AnswerNext<QMessageBox>([&](QMessageBox& box) {
      told = box.text();
      box.accept();
    });
  });
  desk.ComeBack();
  EXPECT_TRUE(QTest::qWaitFor([&] { return !told.isEmpty(); }, 20000));
  EXPECT_EQ(desk.Shown(), "Mine");
  EXPECT_EQ(desk.App().Documents().size(), 1U);
}

}  // namespace
