// What the panels beside the Stagemarks dialog see of it, and what they do in it.
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

}  // namespace
