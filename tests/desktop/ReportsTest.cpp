// Reports after a command: a line for what went well, a window for what did not and for exports.
#include "program/desktop/Reports.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QLabel>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QStatusBar>
#include <filesystem>
#include <fstream>

#include "tests/desktop/States.h"
#include "tests/support/SceneBuilder.h"

namespace {

namespace fs = std::filesystem;

using desk::Desk;

std::string Line(Desk& desk) { return desk.Window().statusBar()->currentMessage().toStdString(); }

std::string Heading(const QDialog& report) {
  std::string text;
  for (const QLabel* label : report.findChildren<QLabel*>()) text += label->text().toStdString();
  return text;
}

std::string Details(const QDialog& report) {
  return report.findChild<QPlainTextEdit*>()->toPlainText().toStdString();
}

QPushButton* OpenFolder(const QDialog& report) {
  for (QPushButton* button : report.findChildren<QPushButton*>()) {
    if (button->text() == "Open Folder") return button;
  }
  return nullptr;
}

// Checks all states and presses the button; the notice is read and the folder chosen.
void Export(Desk& desk, const std::string& folder) {
  fs::create_directory(folder);
  engine::ChooseMenu(*desk.Dialog(), stagemarks::kCheckAll);
  desk::AnswerNext([folder](QDialog& box) {
    desk::ChooseInNextBox(folder);
    dynamic_cast<QMessageBox&>(box).button(QMessageBox::Ok)->click();
  });
  QTest::mouseClick(&desk.Gadget<QPushButton>(stagemarks::kGenerateFiles), Qt::LeftButton);
  Desk::Rest();
}

void Save(Desk& desk, const std::string& name) {
  desk::ChooseInNextBox(desk.Folder() + "/" + name);
  desk.Entry("File", "Save As").trigger();
  Desk::Rest();
}

TEST(Reports, WhatWentWellIsALine) {
  Desk desk;
  Save(desk, "room.c4d");
  EXPECT_EQ(Line(desk), "Saved \"room.c4d\".");
  desk.Gadget<QCheckBox>(stagemarks::kGeneratePreview).click();
  desk::RecordState(desk, "Overview");
  EXPECT_EQ(Line(desk), "Recorded \"Overview\", with preview.");
  desk::LoadState(desk, 0);
  EXPECT_EQ(Line(desk), "Loaded \"Overview\".");
  EXPECT_EQ(desk.Window().Reporting().Window(), nullptr);
  EXPECT_TRUE(pictures::Write(desk.Window(), "told-loaded"));
}

TEST(Reports, OpeningNamesTheTexturesThatAreNotThere) {
  Desk desk;
  host::BaseMaterial* material = host::BaseMaterial::Alloc(host::Mmaterial);
  tests::SceneBuilder(*host::GetActiveDocument()).Bitmap(material, "wood.png");
  host::GetActiveDocument()->AppendMaterial(material);
  Save(desk, "room.c4d");
  desk.Restart();
  ASSERT_TRUE(desk.Window().Commands().Open(desk.Folder() + "/room.c4d"));
  EXPECT_EQ(Line(desk), "Opened \"room.c4d\"; 1 texture was found nowhere: \"wood.png\".");
}

TEST(Reports, APreviewThatIsNotWrittenStaysUntilItIsRead) {
  Desk desk;
  Save(desk, "room.c4d");
  std::ofstream(desk.Folder() + "/room_SM") << "a file in the way of the folder";
  desk.Gadget<QCheckBox>(stagemarks::kGeneratePreview).click();
  for (const char* name : {"Overview", "Detail"}) desk::RecordState(desk, name);
  EXPECT_EQ(Line(desk), "Recorded \"Detail\".");
  QDialog* report = desk.Window().Reporting().Window();
  ASSERT_NE(report, nullptr);
  EXPECT_FALSE(report->isModal());
  EXPECT_EQ(Details(*report).find("The preview of \"Detail\" was not written.\n"), 0U)
      << "the last one only";
  EXPECT_NE(Details(*report).find("room_SM"), std::string::npos);
  EXPECT_EQ(OpenFolder(*report), nullptr);
  report->close();
  Desk::Rest();
  EXPECT_EQ(desk.Window().Reporting().Window(), nullptr);
}

TEST(Reports, AnExportSaysHowManyFilesAndOpensTheirFolder) {
  Desk desk;
  Save(desk, "room.c4d");
  for (const char* name : {"Overview", "Detail"}) desk::RecordState(desk, name);
  Export(desk, desk.Folder() + "/out");
  const std::string exported = "Exported 2 scene files into \"" + desk.Folder() + "/out\".";
  EXPECT_EQ(Line(desk), exported);
  QDialog* report = desk.Window().Reporting().Window();
  ASSERT_NE(report, nullptr);
  EXPECT_EQ(Heading(*report), exported);
  EXPECT_EQ(Details(*report), "room Detail/room Detail.c4d\nroom Overview/room Overview.c4d");
  EXPECT_NE(OpenFolder(*report), nullptr);
  EXPECT_TRUE(pictures::Write(*report, "report-export"));
}

// Asked while the plug-in waits for its folder: a no is the folder called off.
TEST(Reports, NamesThatAreNoFilesAreToldBeforeTheFirstByte) {
  Desk desk;
  Save(desk, "room.c4d");
  for (const char* name : {"Above", "In/Out"}) desk::RecordState(desk, name);
  const std::string out = desk.Folder() + "/out";
  std::string asked;
  QMessageBox::StandardButton proposed = QMessageBox::Yes;
  const QPointer<QTimer> hands = new QTimer;
  QObject::connect(hands, &QTimer::timeout, hands, [&] {
    auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    if (!box || !box->button(QMessageBox::No)) return;
    asked = box->text().toStdString();
    proposed = box->standardButton(box->defaultButton());
    EXPECT_TRUE(pictures::Write(*box, "export-obstacles"));
    box->button(QMessageBox::No)->click();
  });
  hands->start(5);
  Export(desk, out);
  delete hands;
  EXPECT_EQ(asked.find("Not everything can be written."), 0U) << asked;
  EXPECT_NE(asked.find("In/Out"), std::string::npos) << asked;
  EXPECT_EQ(proposed, QMessageBox::No);
  EXPECT_TRUE(fs::is_empty(out));
  EXPECT_EQ(desk.Window().Reporting().Window(), nullptr);
}

TEST(Reports, RoomThatIsNotThereIsAskedAboutAndElseSaid) {
  Desk desk;
  exporting::ExportPlan plan;
  plan.scenes = 2;
  plan.bytes = 3'000'000;
  plan.free = 2'000'000;
  std::string asked;
  desk::AnswerNext([&](QDialog& box) {
    asked = dynamic_cast<QMessageBox&>(box).text().toStdString();
    dynamic_cast<QMessageBox&>(box).button(QMessageBox::Yes)->click();
  });
  EXPECT_TRUE(desk.Window().Reporting().MayExport(plan, "/out"));
  EXPECT_EQ(asked,
            "The disk may be too small: 2 scene files, about 3.0 MB go to \"/out\", where 2.0 MB "
            "are free.\n\nExport all the same?");
  plan.free = 5'000'000;
  EXPECT_TRUE(desk.Window().Reporting().MayExport(plan, "/out"));
  EXPECT_EQ(Line(desk), "Exporting 2 scene files, about 3.0 MB; 5.0 MB are free");
  plan.free.reset();
  EXPECT_TRUE(desk.Window().Reporting().MayExport(plan, "/out"));
  EXPECT_EQ(Line(desk), "Exporting 2 scene files, about 3.0 MB");
}

}  // namespace
