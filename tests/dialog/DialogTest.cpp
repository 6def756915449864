// Opening, closing, values and the menu bar.
#include <gtest/gtest.h>

#include <limits>
#include <sstream>

#include "tests/dialog/SampleDialog.h"

namespace {

using sample::SampleDialog;

struct Watcher : engine::DialogObserver {
  std::vector<std::string> seen;
  Watcher() { engine::AddDialogObserver(*this); }
  ~Watcher() override { engine::RemoveDialogObserver(*this); }
  void DialogOpened(host::GeDialog&) override { seen.push_back("opened"); }
  void DialogClosed(host::GeDialog&) override { seen.push_back("closed"); }
  void DialogChanged(host::GeDialog&, const engine::Gadget* gadget) override {
    seen.push_back(gadget ? "changed " + std::to_string(gadget->id) : "changed");
  }
};

TEST(Dialog, BuildsOnceAndFillsAtEachOpening) {
  SampleDialog dialog;
  EXPECT_TRUE(dialog.OpenIt());
  EXPECT_EQ(engine::DialogPluginId(dialog), 4711);
  EXPECT_TRUE(dialog.OpenIt());
  EXPECT_EQ(dialog.Heard(), "layout, values");
  dialog.SetString(sample::kField, "kept");
  EXPECT_TRUE(dialog.Close());
  EXPECT_FALSE(dialog.IsOpen());
  EXPECT_FALSE(dialog.Close());
  EXPECT_TRUE(dialog.RestoreLayout(4711, 0, nullptr));
  EXPECT_EQ(dialog.Heard(), "destroyed, values");
  host::String text;
  EXPECT_TRUE(dialog.GetString(sample::kField, text));
  EXPECT_EQ(text.ToUtf8(), "kept");
}

TEST(Dialog, AFailedLayoutLeavesNothingBehind) {
  SampleDialog dialog;
  dialog.layoutSucceeds = false;
  EXPECT_FALSE(dialog.OpenIt());
  EXPECT_FALSE(dialog.IsOpen());
  EXPECT_TRUE(engine::DialogRoot(dialog).children.empty());
  EXPECT_EQ(engine::FindGadget(dialog, sample::kButton), nullptr);
  dialog.layoutSucceeds = true;
  EXPECT_TRUE(dialog.OpenIt());
  EXPECT_EQ(engine::DialogRoot(dialog).children.size(), 1U);
  EXPECT_EQ(dialog.Heard(), "layout, layout, values");
}

TEST(Dialog, FailedValuesKeepItClosedButBuilt) {
  SampleDialog dialog;
  dialog.valuesSucceed = false;
  EXPECT_FALSE(dialog.OpenIt());
  EXPECT_TRUE(engine::OpenDialogs().empty());
  dialog.valuesSucceed = true;
  EXPECT_TRUE(dialog.OpenIt());
  EXPECT_EQ(dialog.Heard(), "layout, values, values");
}

TEST(Dialog, AskCloseKeepsItOpen) {
  SampleDialog dialog;
  ASSERT_TRUE(dialog.OpenIt());
  dialog.staysOpen = true;
  EXPECT_FALSE(dialog.Close());
  EXPECT_TRUE(dialog.IsOpen());
}

TEST(Dialog, ObserversHearOfOpenDialogsOnly) {
  Watcher watcher;
  {
    SampleDialog dialog;
    dialog.OpenIt();
    dialog.SetLong(sample::kCheckbox, 1);
    dialog.MenuInitString(sample::kEntry, host::TRUE, host::TRUE);
    dialog.Close();
    dialog.SetLong(sample::kCheckbox, 0);
    dialog.OpenIt();
  }
  EXPECT_EQ(watcher.seen, (std::vector<std::string>{"opened", "changed 2", "changed", "closed",
                                                    "opened", "closed"}));
  EXPECT_TRUE(engine::OpenDialogs().empty());
}

TEST(Dialog, AnIdIsTakenOnce) {
  SampleDialog dialog;
  ASSERT_TRUE(dialog.OpenIt());
  EXPECT_FALSE(dialog.AddButton(sample::kField, 0, 0, 0, "again"));
  EXPECT_FALSE(dialog.AddChild(sample::kCombo, sample::kFirstChoice, "again"));
  EXPECT_FALSE(dialog.AddChild(sample::kButton, 1, "no combo"));
  EXPECT_FALSE(dialog.MenuAddString(sample::kEntry, "again"));
  EXPECT_FALSE(dialog.GroupBegin(sample::kField, 0, 1, 0, "again", 0));
  EXPECT_FALSE(dialog.GroupEnd());
  EXPECT_EQ(dialog.AddCustomGui(500, 12345, "unknown kind", 0, 0, 0, host::BaseContainer()),
            nullptr);
  EXPECT_EQ(dialog.FindCustomGui(sample::kPicture, host::CUSTOMGUI_BITMAPBUTTON), dialog.picture);
  EXPECT_EQ(dialog.FindCustomGui(sample::kPicture, 12345), nullptr);
  EXPECT_TRUE(dialog.AddSeparatorV(0));
  EXPECT_TRUE(dialog.AddSeparatorV(0));
}

// The real number, the whole number and the text of a gadget, "-" where it refuses.
std::string Reads(const host::GeDialog& dialog, host::LONG id) {
  host::Real real = 0;
  host::LONG whole = 0;
  host::Bool flag = host::FALSE;
  host::String text;
  std::ostringstream out;
  dialog.GetReal(id, real) ? out << real : out << "-";
  dialog.GetLong(id, whole) ? out << " " << whole : out << " -";
  dialog.GetBool(id, flag) ? out << (flag ? " true" : " false") : out << " -";
  dialog.GetString(id, text) ? out << " '" << text.ToUtf8() << "'" : out << " -";
  return out.str();
}

using D = SampleDialog;

struct ValueCase {
  const char* name;
  bool (*set)(D&);
  bool accepted;
  host::LONG id;
  const char* reads;
};

// In this order on one dialog.
constexpr ValueCase kValues[] = {
    {"check box by flag", [](D& d) { return d.SetBool(sample::kCheckbox, true); }, true,
     sample::kCheckbox, "1 1 true 'Fast'"},
    {"check box by number", [](D& d) { return d.SetLong(sample::kCheckbox, 7); }, true,
     sample::kCheckbox, "1 1 true 'Fast'"},
    {"check box by real", [](D& d) { return d.SetReal(sample::kCheckbox, 1, 0, 1, 1, 0); }, false,
     sample::kCheckbox, "1 1 true 'Fast'"},
    {"combo by choice", [](D& d) { return d.SetLong(sample::kCombo, sample::kSecondChoice); }, true,
     sample::kCombo, "51 51 true 'second'"},
    {"combo by unknown choice", [](D& d) { return d.SetLong(sample::kCombo, 3); }, false,
     sample::kCombo, "51 51 true 'second'"},
    {"number truncates",
     [](D& d) { return d.SetReal(sample::kNumber, 24.9, 0, 300, 1, host::FORMAT_LONG); }, true,
     sample::kNumber, "24.9 24 true -"},
    {"number below", [](D& d) { return d.SetReal(sample::kNumber, -5, 0, 300, 1, 0); }, true,
     sample::kNumber, "0 0 false -"},
    {"number above", [](D& d) { return d.SetLong(sample::kNumber, 301); }, true, sample::kNumber,
     "300 300 true -"},
    {"range upside down", [](D& d) { return d.SetReal(sample::kNumber, 1, 2, 0, 1, 0); }, false,
     sample::kNumber, "300 300 true -"},
    {"number beyond whole numbers",
     [](D& d) { return d.SetReal(sample::kNumber, -1e30, -1e40, 1e40, 1, 0); }, true,
     sample::kNumber, "-1e+30 -2147483648 true -"},
    {"number by text", [](D& d) { return d.SetString(sample::kNumber, "4"); }, false,
     sample::kNumber, "-1e+30 -2147483648 true -"},
    {"edit field", [](D& d) { return d.SetString(sample::kField, "äöü"); }, true, sample::kField,
     "- - - 'äöü'"},
    {"edit field by number", [](D& d) { return d.SetLong(sample::kField, 4); }, false,
     sample::kField, "- - - 'äöü'"},
    {"label", [](D& d) { return d.SetString(sample::kButton, "Stop"); }, true, sample::kButton,
     "- - - 'Stop'"},
    {"list", [](D& d) { return d.SetString(sample::kList, "x") || d.SetLong(sample::kList, 1); },
     false, sample::kList, "- - - -"},
    {"unknown",
     [](D& d) { return d.SetBool(999, true) || d.SetString(999, "") || d.Enable(999, true); },
     false, 999, "- - - -"},
    {"menu entry is no gadget", [](D& d) { return d.SetBool(sample::kEntry, true); }, false,
     sample::kEntry, "- - - -"},
};

TEST(DialogValues, EachKindTakesWhatFitsIt) {
  SampleDialog dialog;
  ASSERT_TRUE(dialog.OpenIt());
  for (const ValueCase& c : kValues) {
    EXPECT_EQ(c.set(dialog), c.accepted) << c.name;
    EXPECT_EQ(Reads(dialog, c.id), c.reads) << c.name;
  }
  EXPECT_TRUE(
      dialog.SetReal(sample::kNumber, std::numeric_limits<double>::quiet_NaN(), 3, 9, 1, 0));
  EXPECT_EQ(Reads(dialog, sample::kNumber), "3 3 true -");
}

TEST(DialogValues, ARefusedReadLeavesTheVariableAsItWas) {
  SampleDialog dialog;
  host::LONG whole = 5;
  host::String text("kept");
  EXPECT_FALSE(dialog.GetLong(sample::kNoSuchGadget, whole));
  EXPECT_FALSE(dialog.GetString(sample::kNoSuchGadget, text));
  EXPECT_EQ(whole, 5);
  EXPECT_EQ(text.ToUtf8(), "kept");
}

TEST(DialogMenus, EntriesAreFoundAndMarkedAtEveryDepth) {
  SampleDialog dialog;
  ASSERT_TRUE(dialog.OpenIt());
  EXPECT_TRUE(dialog.MenuInitString(sample::kMarkedEntry, host::FALSE, host::TRUE));
  const engine::MenuEntry* entry = engine::FindMenuEntry(dialog, sample::kMarkedEntry);
  ASSERT_NE(entry, nullptr);
  EXPECT_TRUE(entry->checked);
  EXPECT_FALSE(entry->enabled);
  EXPECT_FALSE(dialog.MenuInitString(0, host::TRUE, host::TRUE))
      << "sub-menus and separators have no ID";
  EXPECT_FALSE(dialog.MenuInitString(sample::kButton, host::TRUE, host::TRUE));
  dialog.MenuFlushAll();
  EXPECT_EQ(engine::FindMenuEntry(dialog, sample::kEntry), nullptr);
  EXPECT_FALSE(dialog.MenuSubEnd());
  EXPECT_FALSE(dialog.MenuAddString(0, "as good as a separator"));
  EXPECT_TRUE(dialog.MenuAddString(1, "the lowest ID"));
}

}  // namespace
