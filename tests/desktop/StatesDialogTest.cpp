// The Stagemarks dialog as the panels beside it see it, and their actions in it.
#include "program/desktop/dialog/StatesDialog.h"

#include <gtest/gtest.h>

#include <QMessageBox>

#include "host/BaseObject.h"
#include "tests/desktop/States.h"

namespace {

using desk::Desk;
using Names = std::vector<std::string>;

TEST(StatesDialog, RowsAreChosenLoadedAndDeletedAsInTheDialog) {
  Desk desk;
  const desktop::StatesDialog& states = desk.Window().States();
  host::BaseDocument* doc = host::GetActiveDocument();
  host::BaseObject* cube = host::BaseObject::Alloc(host::Ocube);
  doc->AppendObject(cube);
  desk::RecordState(desk, "Shown");
  cube->SetEditorMode(host::MODE_OFF);
  desk::RecordState(desk, "Hidden");
  ASSERT_EQ(states.Rows().size(), 2U);
  EXPECT_TRUE(states.Choose({"Hidden", "Shown", "Nowhere"}));
  EXPECT_EQ(states.Chosen(), (Names{"Hidden", "Shown"}));
  EXPECT_TRUE(states.Load("Shown"));
  Desk::Rest();
  EXPECT_EQ(states.Chosen(), Names{"Shown"});
  EXPECT_EQ(cube->GetEditorMode(), host::MODE_UNDEF);
  EXPECT_FALSE(states.Load("Nowhere"));
  desk::AnswerNext<QMessageBox>(
      [](QMessageBox& question) { question.button(QMessageBox::Yes)->click(); });
  EXPECT_TRUE(states.Delete("Hidden"));
  Desk::Rest();
  ASSERT_EQ(states.Rows().size(), 1U);
  EXPECT_EQ(states.Rows().front().name, "Shown");
}

TEST(StatesDialog, OptionsAreTheOnesOfTheDialog) {
  Desk desk;
  const desktop::StatesDialog& states = desk.Window().States();
  EXPECT_TRUE(states.IsOpen());
  const engine::Parts before = states.PartsInForce();
  ASSERT_TRUE(pictures::StagemarksDialog(*desk.Dialog()).Choose("Layers"));
  Desk::Rest();
  EXPECT_EQ(states.PartsInForce(),
            engine::Parts(before).flip(engine::IndexOf(engine::Part::Layers)));
  desk.Dialog()->Close();
  Desk::Rest();
  EXPECT_FALSE(states.IsOpen());
  EXPECT_EQ(states.PartsInForce(), engine::AllParts());
  EXPECT_TRUE(states.Rows().empty());
  EXPECT_FALSE(states.Choose({}));
  EXPECT_FALSE(states.Load("Any"));
}

TEST(CurrentState, StarIsHollowWhileTheSceneIsAnotherOne) {
  Desk desk;
  using Star = desktop::ListModel::Star;
  host::BaseDocument* doc = host::GetActiveDocument();
  host::BaseObject* cube = host::BaseObject::Alloc(host::Ocube);
  doc->AppendObject(cube);
  const auto star = [&](int row) {
    return static_cast<Star>(
        desk::StateList(desk).model()->index(row, 0).data(desktop::ListModel::kStar).toInt());
  };
  const auto change = [&](host::LONG mode) {
    cube->SetEditorMode(mode);
    host::EventAdd();
    Desk::Rest();
  };
  desk::RecordState(desk, "A");
  EXPECT_EQ(star(0), Star::Full);
  change(host::MODE_OFF);
  EXPECT_EQ(star(0), Star::Hollow);
  EXPECT_EQ(desk::StateList(desk).model()->index(0, 0).data().toString().trimmed(), "*")
      << "the row is the plug-in's";
  change(host::MODE_UNDEF);
  EXPECT_EQ(star(0), Star::Full) << "back again";
  change(host::MODE_OFF);
  desk::RecordState(desk, "B");
  EXPECT_EQ(star(0), Star::None);
  EXPECT_EQ(star(1), Star::Full);
  // Differences that the options leave out do not count.
  change(host::MODE_ON);
  EXPECT_EQ(star(1), Star::Hollow);
  ASSERT_TRUE(pictures::StagemarksDialog(*desk.Dialog()).Choose("Objects"));
  Desk::Rest();
  EXPECT_EQ(star(1), Star::Full);
}

}  // namespace
