// The main window with the built plug-in: files, undo, docks and questions, by clicks and menu entries.
#include "program/desktop/MainWindow.h"

#include <gtest/gtest.h>

#include <QFileDialog>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QtTest/QTest>
#include <filesystem>
#include <fstream>

#include "host/BaseObject.h"
#include "program/desktop/dialog/ListView.h"
#include "tests/desktop/Desk.h"

namespace {

using desk::AnswerNext;
using desk::Desk;

constexpr host::LONG kNameField = 10013;
constexpr host::LONG kLoad = 10008;
constexpr host::LONG kRecord = 10023;
constexpr host::LONG kList = 10005;

void Record(Desk& desk, const char* name) {
  auto& field = desk.Gadget<QLineEdit>(kNameField);
  field.clear();
  QTest::keyClicks(&field, name);
  QTest::mouseClick(&desk.Gadget<QPushButton>(kRecord), Qt::LeftButton);
  Desk::Rest();
}

int Rows(Desk& desk) { return desk.Gadget<desktop::ListView>(kList).model()->rowCount(); }

void PressInNextBox(QMessageBox::StandardButton button) {
  AnswerNext([button](QDialog& box) { dynamic_cast<QMessageBox&>(box).button(button)->click(); });
}

void ChooseInNextBox(const std::string& path) {
  AnswerNext([path](QDialog& box) {
    auto& chooser = dynamic_cast<QFileDialog&>(box);
    chooser.findChild<QLineEdit*>()->setText(QString::fromStdString(path));
    QMetaObject::invokeMethod(&chooser, "accept");
  });
}

TEST(MainWindow, RecordsAndLoadsByClicksAndTakesItBack) {
  Desk desk;
  host::BaseObject* object = host::BaseObject::Alloc(host::Onull);
  host::GetActiveDocument()->AppendObject(object);
  EXPECT_FALSE(desk.Entry("Edit", "Undo").isEnabled());
  Record(desk, "Morning");
  ASSERT_EQ(Rows(desk), 1);
  EXPECT_TRUE(desk.Window().isWindowModified());
  object->SetEditorMode(host::MODE_OFF);
  auto& list = desk.Gadget<desktop::ListView>(kList);
  QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, list.visualRect(list.model()->index(0, 2)).center());
  QTest::mouseClick(&desk.Gadget<QPushButton>(kLoad), Qt::LeftButton);
  Desk::Rest();
  EXPECT_EQ(object->GetEditorMode(), host::MODE_UNDEF);
  desk.Entry("Edit", "Undo").trigger();
  EXPECT_EQ(object->GetEditorMode(), host::MODE_OFF);
  Desk::Rest();
  desk.Entry("Edit", "Redo").trigger();
  EXPECT_EQ(object->GetEditorMode(), host::MODE_UNDEF);
}

TEST(MainWindow, ChangedDocumentsAskBeforeTheyGo) {
  Desk desk;
  Record(desk, "Morning");
  PressInNextBox(QMessageBox::Cancel);
  EXPECT_FALSE(desk.Window().close());
  PressInNextBox(QMessageBox::Cancel);
  desk.Entry("File", "Close").trigger();
  Desk::Rest();
  EXPECT_EQ(Rows(desk), 1);
  PressInNextBox(QMessageBox::Discard);
  desk.Entry("File", "Close").trigger();
  Desk::Rest();
  EXPECT_EQ(Rows(desk), 0);
  EXPECT_TRUE(desk.Window().close());
}

TEST(MainWindow, SavesAsReopensAndRemembers) {
  Desk desk;
  Record(desk, "Morning");
  const std::string path = desk.Folder() + "/room.c4d";
  ChooseInNextBox(desk.Folder() + "/room");
  desk.Entry("File", "Save").trigger();
  Desk::Rest();
  EXPECT_TRUE(std::filesystem::exists(path));
  EXPECT_FALSE(desk.Window().isWindowModified());
  EXPECT_EQ(desk.Window().windowTitle(), "room.c4d[*]");
  desk.Restart();
  EXPECT_EQ(Rows(desk), 0);
  EXPECT_EQ(desk.Window().Commands().RecentFiles(), QStringList{QString::fromStdString(path)});
  ASSERT_TRUE(desk.Window().Commands().Open(path));
  Desk::Rest();
  EXPECT_EQ(Rows(desk), 1);
  EXPECT_EQ(desk.App().Documents().size(), 1U) << "the empty document of the start stays";
}

TEST(MainWindow, SwitchingDocumentsKeepsTheDialogInStep) {
  Desk desk;
  Record(desk, "Morning");
  desk.Entry("File", "New").trigger();
  Desk::Rest();
  EXPECT_EQ(Rows(desk), 0);
  EXPECT_TRUE(desk.Entry("Window", "Untitled").isCheckable());
  host::SetActiveDocument(desk.App().Documents().front());
  host::EventAdd();
  Desk::Rest();
  EXPECT_EQ(Rows(desk), 1);
}

TEST(MainWindow, OneFileOpenedTwiceIsTwoDocuments) {
  Desk desk;
  const std::string path = desk.Folder() + "/room.c4d";
  host::GetActiveDocument()->AppendObject(host::BaseObject::Alloc(host::Ocube));
  ASSERT_TRUE(desk.App().SaveDocumentAs(*host::GetActiveDocument(), path));
  ASSERT_TRUE(desk.Window().Commands().Open(path));
  host::BaseDocument* second = host::GetActiveDocument();
  second->AppendObject(host::BaseObject::Alloc(host::Onull));
  Desk::Rest();
  EXPECT_EQ(desk.Window().Objects().model()->rowCount(), 2);
  host::SetActiveDocument(desk.App().Documents().front());
  Desk::Rest();
  EXPECT_EQ(desk.Window().Objects().model()->rowCount(), 1);
  EXPECT_EQ(desktop::FindOpenDocument(desktop::IdentityOf(second)), second);
}

TEST(MainWindow, WhatIsNoSceneIsSaidAndChangesNothing) {
  Desk desk;
  Record(desk, "Morning");
  for (const char* name : {"/text.c4d", "/text.gltf", "/picture.png", "/missing.c4d"}) {
    const std::string path = desk.Folder() + name;
    if (path.find("missing") == std::string::npos) std::ofstream(path) << "no scene";
    std::string said;
    AnswerNext([&said](QDialog& box) {
      said = dynamic_cast<QMessageBox&>(box).text().toStdString();
      box.accept();
    });
    EXPECT_FALSE(desk.Window().Commands().Open(path));
    EXPECT_NE(said, "") << name;
    Desk::Rest();
    EXPECT_EQ(Rows(desk), 1);
  }
  EXPECT_TRUE(desk.Window().Commands().RecentFiles().isEmpty());
}

TEST(MainWindow, ClosedDocksComeBackFromTheMenuAndTheLayout) {
  Desk desk;
  auto* dock = desk.PluginDock();
  ASSERT_NE(dock, nullptr);
  dock->close();
  Desk::Rest();
  EXPECT_EQ(desk.Dialog(), nullptr);
  desk.Entry("Plug-ins", "Stagemarks").trigger();
  Desk::Rest();
  ASSERT_NE(desk.Dialog(), nullptr);
  desk.Window().addDockWidget(Qt::LeftDockWidgetArea, desk.PluginDock());
  desk.Window().close();
  desk.Restart();
  EXPECT_EQ(desk.Window().dockWidgetArea(desk.PluginDock()), Qt::LeftDockWidgetArea);
  desk.Entry("Window", "Reset Layout").trigger();
  EXPECT_EQ(desk.Window().dockWidgetArea(desk.PluginDock()), Qt::RightDockWidgetArea);
}

TEST(MainWindowPicture, WithTheSampleScene) {
  Desk desk;
  ASSERT_TRUE(desk.Window().Commands().Open(TEST_SOURCE_DIR "/scenes/spider/spider.obj"));
  Desk::Rest();
  for (const char* name : {"All on", "Legs only", "Close"}) Record(desk, name);
  EXPECT_TRUE(QTest::qWaitFor([&] { return desk.Window().View().IsFinished(); }, 60000));
  EXPECT_TRUE(pictures::Write(desk.Window(), "main-window"));
}

}  // namespace
