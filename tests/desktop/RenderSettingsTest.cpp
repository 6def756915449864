// The render settings panel: list and values in step with the document, all of it through undo, and
// what is edited is what the plug-in records and recalls.
#include <QAbstractItemModelTester>
#include <QMessageBox>

#include "engine/scene/NodeIds.h"
#include "engine/undo/Undo.h"
#include "host/Parameters.h"
#include "program/desktop/panels/RenderSettingsPanel.h"
#include "tests/desktop/Drops.h"
#include "tests/desktop/Fields.h"
#include "tests/desktop/States.h"

namespace {

using desk::Desk;
using desk::Scene;
using desktop::RenderSettingsModel;
using fields::BoxOf;
using fields::EditOf;
using fields::Enter;
using host::RenderData;

struct WithSettings : Desk {
  RenderData* first = Scene().GetFirstRenderData();

  WithSettings() { Raise("render-settings"); }
  desktop::RenderSettingsPanel& Panel() {
    return Desk::Panel<desktop::RenderSettingsPanel>("render-settings");
  }
  RenderSettingsModel& Model() { return Panel().List().Model(); }
  QModelIndex IndexOf(const RenderData* settings, int column = 0) {
    return Model().IndexOf(engine::IdOf(*settings), column);
  }
  QPoint PlaceOf(const RenderData* settings, int column) {
    return Panel().List().visualRect(IndexOf(settings, column)).center();
  }
  void Click(const RenderData* settings, int column, Qt::KeyboardModifiers keys = {}) {
    QTest::mouseClick(Panel().List().viewport(), Qt::LeftButton, keys, PlaceOf(settings, column));
    Rest();
  }
  void Do(const QString& text) {
    for (QAction* action : Panel().List().actions()) {
      if (action->text() == text) action->trigger();
    }
    Rest();
    // A new name is being edited: leave it as it is.
    if (auto* editor = qobject_cast<QLineEdit*>(QApplication::focusWidget()))
      QTest::keyClick(editor, Qt::Key_Escape);
    Rest();
  }
};

// A recording's own copy is marked as such and goes only after a question; what hangs above it
// takes it along.
TEST(RenderSettings, OfStagemarksAreMarkedAndAskBeforeTheyGo) {
  WithSettings desk;
  desk::RecordState(desk, "Noon <b>");
  RenderData* kept = desk.first->GetNext();
  ASSERT_NE(kept, nullptr);
  EXPECT_FALSE(desk.IndexOf(kept).data(Qt::DecorationRole).isNull());
  EXPECT_TRUE(desk.IndexOf(kept).data(Qt::ToolTipRole).toString().contains("Noon &lt;b&gt;"));
  EXPECT_TRUE(desk.IndexOf(desk.first).data(Qt::DecorationRole).isNull());
  EXPECT_TRUE(desk.IndexOf(desk.first).data(Qt::ToolTipRole).isNull());
  desk.Do("New Render Settings");
  RenderData* above = kept->GetNext();
  kept->Remove();
  Scene().InsertRenderData(kept, above, nullptr);
  host::EventAdd();
  Desk::Rest();
  for (const auto& [chosen, answer, stays] : {std::tuple{kept, QMessageBox::No, true},
                                              {above, QMessageBox::No, true},
                                              {above, QMessageBox::Yes, false}}) {
    desk.Panel().List().expandAll();
    desk.Click(chosen, RenderSettingsModel::kName);
    QString told;
    desk::AnswerNext<QMessageBox>([&, answer = answer](QMessageBox& box) {
      EXPECT_EQ(box.defaultButton(), box.button(QMessageBox::No));
      told = box.informativeText();
      box.button(answer)->click();
    });
    desk.Do("Delete Render Settings");
    EXPECT_EQ(told.toStdString(), "Stagemarks: \u201cNoon <b>\u201d");
    EXPECT_EQ(desk.first->GetNext() == above, stays);
  }
  desk.Do("New Render Settings");
  desk.Click(desk.first->GetNext(), RenderSettingsModel::kName);
  desk.Do("Delete Render Settings");
  EXPECT_EQ(desk.first->GetNext(), nullptr) << "those of nobody go at once";
}

TEST(RenderSettings, AreAddedCopiedAndActivatedThroughUndo) {
  WithSettings desk;
  const QAbstractItemModelTester tester(&desk.Model(),
                                        QAbstractItemModelTester::FailureReportingMode::Fatal);
  desk.Do("New Render Settings");
  RenderData* second = desk.first->GetNext();
  ASSERT_NE(second, nullptr);
  EXPECT_FALSE(second->GetName() == desk.first->GetName());
  desk.Click(desk.first, RenderSettingsModel::kName);
  desk.first->SetParameter(host::RDATA_XRES, host::LONG(321), 0);
  desk.Do("Duplicate");
  RenderData* copy = desk.first->GetNext();
  EXPECT_EQ(copy->GetNext(), second);
  EXPECT_EQ(desk.IndexOf(copy, RenderSettingsModel::kSize).data().toString(), "321 \u00d7 720");
  desk.Click(copy, RenderSettingsModel::kActive);
  EXPECT_EQ(Scene().GetActiveRenderData(), copy);
  QTest::mouseDClick(desk.Panel().List().viewport(), Qt::LeftButton, {},
                     desk.PlaceOf(second, RenderSettingsModel::kName));
  Desk::Rest();
  EXPECT_EQ(Scene().GetActiveRenderData(), second);
  desk.App().Undo();
  EXPECT_EQ(Scene().GetActiveRenderData(), copy);
  Desk::Rest();
  EXPECT_TRUE(desk.IndexOf(copy).data(RenderSettingsModel::kIsActive).toBool());
  EXPECT_TRUE(desk.Model().setData(desk.IndexOf(copy), "Large", Qt::EditRole));
  EXPECT_FALSE(desk.Model().setData(desk.IndexOf(copy), "", Qt::EditRole));
  EXPECT_TRUE(copy->GetName() == host::String("Large"));
  for (int step = 0; step < 4; ++step) desk.App().Undo();
  Desk::Rest();
  EXPECT_EQ(desk.Model().rowCount(), 1);
  EXPECT_EQ(Scene().GetActiveRenderData(), desk.first);
}

TEST(RenderSettings, AreDeletedThroughUndo) {
  WithSettings desk;
  const QAbstractItemModelTester tester(&desk.Model(),
                                        QAbstractItemModelTester::FailureReportingMode::Fatal);
  desk.Do("New Render Settings");
  desk.Do("Duplicate");
  desk.Do("Render with These");
  RenderData* active = Scene().GetActiveRenderData();
  EXPECT_NE(active, desk.first);
  desk.Panel().List().selectAll();
  desk.Do("Delete Render Settings");
  EXPECT_EQ(desk.Model().rowCount(), 1);
  EXPECT_EQ(Scene().GetActiveRenderData(), Scene().GetFirstRenderData());
  desk.App().Undo();
  Desk::Rest();
  EXPECT_EQ(desk.Model().rowCount(), 3);
  EXPECT_EQ(Scene().GetActiveRenderData(), active);
}

TEST(RenderSettings, AreMovedToWhereTheyAreDropped) {
  WithSettings desk;
  const QAbstractItemModelTester tester(&desk.Model(),
                                        QAbstractItemModelTester::FailureReportingMode::Fatal);
  desk.Do("New Render Settings");
  desk.Do("New Render Settings");
  RenderData* second = desk.first->GetNext();
  RenderData* third = second->GetNext();
  Scene().SetActiveRenderData(third);
  Desk::Rest();
  const auto drop = [&](const RenderData* dragged, const RenderData* on, bool before = false) {
    return drops::Drop(desk.Panel().List(), desk.Model().mimeData({desk.IndexOf(dragged)}),
                       desk.IndexOf(on), before);
  };
  desk.Click(second, RenderSettingsModel::kName);
  EXPECT_TRUE(drop(third, desk.first, true));
  EXPECT_EQ(Scene().GetFirstRenderData(), third);
  EXPECT_TRUE(drop(second, third));
  EXPECT_EQ(second->GetUp(), third);
  EXPECT_FALSE(drop(third, second)) << "below itself";
  EXPECT_EQ(desk.Panel().List().Chosen(), engine::SettingsList{second});
  EXPECT_EQ(Scene().GetActiveRenderData(), third);
  EXPECT_EQ(engine::UndoName(Scene()), "Move");
  desk.App().Undo();
  desk.App().Undo();
  EXPECT_EQ(desk.first->GetNext(), second);
  EXPECT_EQ(second->GetNext(), third);
  EXPECT_EQ(Scene().GetActiveRenderData(), third);
}

TEST(RenderSettings, ValuesAreThoseOfTheChosenOnes) {
  WithSettings desk;
  RenderData* other = RenderData::Alloc();
  other->SetName("Small");
  Scene().InsertRenderData(other, nullptr, desk.first);
  Desk::Rest();
  QWidget& values = desk.Panel().Values();
  EXPECT_EQ(EditOf(values, "Width").text(), "1280 px")
      << "those of the active ones, where none are chosen";
  desk.Click(other, RenderSettingsModel::kName);
  Enter(EditOf(values, "Width"), "320");
  EXPECT_EQ(other->GetDataInstance()->GetLong(host::RDATA_XRES), 320);
  EXPECT_EQ(desk.first->GetDataInstance()->GetLong(host::RDATA_XRES), 1280);
  EXPECT_EQ(desk.IndexOf(other, RenderSettingsModel::kSize).data().toString(), "320 \u00d7 720");
  desk.Click(desk.first, RenderSettingsModel::kName, Qt::ControlModifier);
  EXPECT_EQ(EditOf(values, "Width").placeholderText(), "\u2014");
  Enter(EditOf(values, "To"), "120");
  for (const RenderData* each : {desk.first, other}) {
    EXPECT_EQ(each->GetDataInstance()->GetTime(host::RDATA_FRAMETO), host::BaseTime(120, 30));
  }
  fields::Pick(fields::ListOf(values, "Frames"), "From - to");
  EXPECT_EQ(desk.IndexOf(other, RenderSettingsModel::kFrames).data().toString(), "0 \u2013 120");
  desk.App().Undo();
  desk.App().Undo();
  EXPECT_EQ(other->GetDataInstance()->GetTime(host::RDATA_FRAMETO), host::BaseTime(90, 30));
  const QString before = EditOf(values, "Height").text();
  for (const char* text : {"0", "12.5", "99999", "x"}) {
    Enter(EditOf(values, "Height"), text);
    values.setFocus();
    EditOf(values, "Width").setFocus();
    EXPECT_EQ(EditOf(values, "Height").text(), before) << text;
  }
}

TEST(RenderSettings, PostEffectsAndPassesAreSwitched) {
  WithSettings desk;
  host::BaseVideoPost* glow = host::BaseVideoPost::Alloc(host::VPglobalillumination);
  glow->SetName("Glow");
  host::MultipassObject* pass = host::MultipassObject::Alloc(host::Zmultipass);
  pass->SetName("Depth");
  desk.first->InsertVideoPost(glow);
  desk.first->InsertMultipass(pass);
  Desk::Rest();
  QWidget& values = desk.Panel().Values();
  for (host::BaseList2D* node : std::initializer_list<host::BaseList2D*>{glow, pass}) {
    const QString name = QString::fromStdString(node->GetName().ToUtf8());
    BoxOf(values, name).click();
    EXPECT_TRUE(node->GetBit(host::BIT_DISABLED)) << name.toStdString();
    desk.App().Undo();
    EXPECT_FALSE(node->GetBit(host::BIT_DISABLED));
  }
  Enter(EditOf(values, "Cache file"), "/gi/cache.bin");
  EXPECT_TRUE(glow->GetDataInstance()->GetFilename(host::GI_CACHE_FILENAME).GetString() ==
              host::String("/gi/cache.bin"));
}

TEST(RenderSettings, WhatIsEditedIsRecordedAndRecalled) {
  WithSettings desk;
  QWidget& values = desk.Panel().Values();
  Enter(EditOf(values, "Width"), "640");
  desk::RecordState(desk, "Small");
  EXPECT_EQ(desk.Model().rowCount(), 2);
  Enter(EditOf(values, "Width"), "1920");
  desk::LoadState(desk, 0);
  EXPECT_EQ(Scene().GetActiveRenderData()->GetDataInstance()->GetLong(host::RDATA_XRES), 640);
  EXPECT_EQ(EditOf(values, "Width").text(), "640 px");
}

TEST(RenderSettings, TakeThousands) {
  WithSettings desk;
  for (int i = 0; i < 5000; ++i) {
    RenderData* settings = RenderData::Alloc();
    settings->SetName(host::String("State " + std::to_string(i)));
    Scene().InsertRenderData(settings, nullptr, desk.first);
  }
  Desk::Rest();
  desk.Panel().List().selectAll();
  Desk::Rest();
  ASSERT_TRUE(fields::IsReadSoon(desk.Panel().Values()));
  Enter(EditOf(desk.Panel().Values(), "Height"), "99");
  EXPECT_EQ(desk.first->GetNext()->GetDataInstance()->GetLong(host::RDATA_YRES), 99);
  desk.Do("Delete Render Settings");
  EXPECT_EQ(desk.Model().rowCount(), 1);
  desk.App().Undo();
  Desk::Rest();
  EXPECT_EQ(desk.Model().rowCount(), 5001);
}

TEST(RenderSettingsPicture, OfThePanel) {
  WithSettings desk;
  int width = 640;
  for (const char* name : {"Preview", "Film", "Poster"}) {
    RenderData* settings = RenderData::Alloc();
    settings->SetName(name);
    settings->SetParameter(host::RDATA_XRES, host::LONG(width *= 2), 0);
    settings->SetParameter(host::RDATA_FRAMESEQUENCE, host::LONG(width % 3), 0);
    Scene().InsertRenderData(settings, nullptr, desk.first);
  }
  Desk::Rest();
  auto& dock = *desk.Window().findChild<QDockWidget*>("render-settings");
  desk.Window().resizeDocks({&dock}, {320}, Qt::Vertical);
  desk.Click(desk.first->GetNext(), RenderSettingsModel::kName);
  EXPECT_TRUE(pictures::Write(dock, "render-settings"));
  EXPECT_TRUE(pictures::Write(desk.Window(), "render-settings-window"));
}

}  // namespace
