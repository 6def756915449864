// A person's input to gadgets: the value changes, then one Command arrives.
#include <gtest/gtest.h>

#include <limits>
#include <memory>

#include "tests/dialog/SampleDialog.h"

namespace {

using sample::SampleDialog;

class DialogEvents : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(dialog_.OpenIt());
    for (int i = 0; i < 3; ++i) dialog_.list.SetItem(i, SampleDialog::NamedRow("row", false));
    dialog_.Heard();
  }
  SampleDialog dialog_;
};

TEST_F(DialogEvents, ArriveAsOneCommandAfterTheValueChanged) {
  struct Case {
    const char* name;
    bool (*act)(host::GeDialog&);
    const char* heard;
    host::LONG drawn;
  };
  const Case cases[] = {
      {"button", [](host::GeDialog& d) { return engine::PressButton(d, sample::kButton); },
       "command 1 from 1", 0},
      {"picture", [](host::GeDialog& d) { return engine::PressButton(d, sample::kPicture); },
       "command 8 from 8", 0},
      {"menu", [](host::GeDialog& d) { return engine::ChooseMenu(d, sample::kMarkedEntry); },
       "command 61 from 61", 0},
      {"check box",
       [](host::GeDialog& d) { return engine::SetCheckbox(d, sample::kCheckbox, true); },
       "command 2 from 2", sample::kCheckbox},
      {"text", [](host::GeDialog& d) { return engine::TypeText(d, sample::kField, "typed"); },
       "command 4 from 4", sample::kField},
      {"number", [](host::GeDialog& d) { return engine::TypeNumber(d, sample::kNumber, 12.5); },
       "command 5 from 5", sample::kNumber},
      {"combo", [](host::GeDialog& d) { return engine::ChooseFromCombo(d, sample::kCombo, 51); },
       "command 6 from 6", sample::kCombo},
      {"selection",
       [](host::GeDialog& d) {
         return engine::SelectLines(d, sample::kList, {2, 0});
       },
       "command 7 from 7", sample::kList},
      {"row's box", [](host::GeDialog& d) { return engine::ToggleLine(d, sample::kList, 1, 70); },
       "command 7 from 7", sample::kList},
  };
  // Whoever draws the dialog hears of values, and of nothing where none has changed.
  struct Drawing : engine::DialogObserver {
    Drawing() { engine::AddDialogObserver(*this); }
    ~Drawing() override { engine::RemoveDialogObserver(*this); }
    void DialogOpened(host::GeDialog&) override {}
    void DialogClosed(host::GeDialog&) override {}
    void DialogChanged(host::GeDialog&, const engine::Gadget* gadget) override {
      drawn = gadget ? gadget->id : 0;
    }
    host::LONG drawn = 0;
  };
  for (const Case& c : cases) {
    Drawing drawing;
    EXPECT_TRUE(c.act(dialog_)) << c.name;
    EXPECT_EQ(dialog_.Heard(), c.heard) << c.name;
    EXPECT_EQ(drawing.drawn, c.drawn) << c.name;
  }
  EXPECT_FALSE(engine::InsideDialogCall());
  EXPECT_EQ(engine::ListAsText(dialog_, sample::kList), "▸ [ ] row\n  [x] row\n▸ [ ] row\n");
}

TEST_F(DialogEvents, SeeTheNewValueInsideTheCommand) {
  host::LONG seen = 0;
  dialog_.onCommand = [&] { dialog_.GetLong(sample::kNumber, seen); };
  engine::TypeNumber(dialog_, sample::kNumber, 42);
  EXPECT_EQ(seen, 42);
}

TEST_F(DialogEvents, AreRefusedWithoutAWord) {
  struct Case {
    const char* name;
    bool (*act)(host::GeDialog&);
  };
  const Case cases[] = {
      {"no such button",
       [](host::GeDialog& d) { return engine::PressButton(d, sample::kNoSuchGadget); }},
      {"a check box is no button",
       [](host::GeDialog& d) { return engine::PressButton(d, sample::kCheckbox); }},
      {"no such entry", [](host::GeDialog& d) { return engine::ChooseMenu(d, sample::kButton); }},
      {"sub-menus cannot be chosen", [](host::GeDialog& d) { return engine::ChooseMenu(d, 0); }},
      {"no number",
       [](host::GeDialog& d) {
         return engine::TypeNumber(d, sample::kNumber, std::numeric_limits<double>::quiet_NaN());
       }},
      {"no such choices",
       [](host::GeDialog& d) { return engine::ChooseFromCombo(d, sample::kNoSuchGadget, 51); }},
      {"no such choice",
       [](host::GeDialog& d) { return engine::ChooseFromCombo(d, sample::kCombo, 1); }},
      {"line behind the end",
       [](host::GeDialog& d) {
         return engine::SelectLines(d, sample::kList, {0, 3});
       }},
      {"negative line",
       [](host::GeDialog& d) { return engine::ToggleLine(d, sample::kList, -1, 70); }},
      {"a text column has no box",
       [](host::GeDialog& d) { return engine::ToggleLine(d, sample::kList, 0, 71); }},
  };
  for (const Case& c : cases) {
    EXPECT_FALSE(c.act(dialog_)) << c.name;
    EXPECT_EQ(dialog_.Heard(), "") << c.name;
  }
}

TEST_F(DialogEvents, NeedAnOpenDialogAndAGadgetSwitchedOn) {
  dialog_.Enable(sample::kButton, host::FALSE);
  EXPECT_FALSE(engine::PressButton(dialog_, sample::kButton));
  dialog_.MenuInitString(sample::kEntry, host::FALSE, host::FALSE);
  EXPECT_FALSE(engine::ChooseMenu(dialog_, sample::kEntry));
  dialog_.Close();
  EXPECT_FALSE(engine::TypeText(dialog_, sample::kField, "closed"));
  EXPECT_FALSE(engine::ChooseMenu(dialog_, sample::kMarkedEntry));
  EXPECT_EQ(dialog_.Heard(), "destroyed");
}

TEST_F(DialogEvents, MayCloseTheirDialog) {
  dialog_.onCommand = [&] { EXPECT_TRUE(dialog_.Close()); };
  EXPECT_TRUE(engine::PressButton(dialog_, sample::kButton));
  EXPECT_FALSE(dialog_.IsOpen());
  EXPECT_FALSE(engine::InsideDialogCall());
}

struct Vanishing : host::GeDialog {
  host::Bool CreateLayout() override { return AddButton(1, 0, 0, 0, "Vanish"); }
  host::Bool Command(host::LONG, const host::BaseContainer&) override {
    delete this;
    return host::TRUE;
  }
};

TEST(DialogEnds, InsideItsOwnCommandWithoutHarm) {
  auto* dialog = new Vanishing;
  ASSERT_TRUE(dialog->Open(0, 0, 0, 0, 0, 0, 0));
  EXPECT_TRUE(engine::PressButton(*dialog, 1));
  EXPECT_TRUE(engine::OpenDialogs().empty());
  EXPECT_FALSE(engine::InsideDialogCall());
}

struct VanishingWhenAsked : host::GeDialog {
  host::Bool AskClose() override {
    delete this;
    return host::FALSE;
  }
};

TEST(DialogEnds, WhenAskedToCloseWithoutHarm) {
  auto* dialog = new VanishingWhenAsked;
  ASSERT_TRUE(dialog->Open(0, 0, 0, 0, 0, 0, 0));
  EXPECT_TRUE(dialog->Close());
  EXPECT_TRUE(engine::OpenDialogs().empty());
}

TEST_F(DialogEvents, NestAndCountTheirDepth) {
  int depth = 0;
  dialog_.onCommand = [&] {
    if (++depth == 1) engine::PressButton(dialog_, sample::kButton);
    EXPECT_TRUE(engine::InsideDialogCall());
  };
  engine::PressButton(dialog_, sample::kButton);
  EXPECT_EQ(depth, 2);
  EXPECT_FALSE(engine::InsideDialogCall());
}

TEST(CoreMessages, ReachOpenDialogsOnly) {
  auto first = std::make_unique<SampleDialog>();
  auto second = std::make_unique<SampleDialog>();
  SampleDialog closed;
  first->OpenIt();
  second->OpenIt();
  first->Heard();
  second->Heard();
  engine::SendCoreMessage(host::EVMSG_CHANGE, host::BaseContainer());
  EXPECT_EQ(first->Heard() + second->Heard() + closed.Heard(), "core 604core 604");
  first->onCommand = [&] { second->Close(); };
  engine::SendCoreMessage(host::EVMSG_CHANGE, host::BaseContainer());
  EXPECT_EQ(first->Heard() + second->Heard(), "core 604destroyed");
  second->OpenIt();
  first->onCommand = [&] { second.reset(); };
  engine::SendCoreMessage(host::EVMSG_CHANGE, host::BaseContainer());
  EXPECT_EQ(first->Heard(), "core 604");
  EXPECT_EQ(engine::OpenDialogs().size(), 1U);
}

}  // namespace
