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

// One gadget of every kind and every property that a plug-in can give it.
struct Furnished : host::GeDialog {
  host::Bool CreateLayout() override {
    SetTitle("Furnished");
    EXPECT_FALSE(GroupSpace(1, 1)) << "no group is open";
    EXPECT_FALSE(GroupBorderSpace(1, 1, 1, 1));
    EXPECT_TRUE(GroupBegin(10, 1, 2, 3, "Outer", 0));
    EXPECT_TRUE(GroupSpace(4, 5));
    EXPECT_TRUE(GroupBorderSpace(6, 7, 8, 9));
    EXPECT_TRUE(GroupBegin(0, 11, 12, 13, "Inner", 0));
    EXPECT_TRUE(AddButton(14, 15, 16, 17, "Button"));
    EXPECT_TRUE(AddCheckbox(18, 19, 20, 21, "Box"));
    EXPECT_TRUE(AddStaticText(22, 23, 24, 25, "Text", 0));
    EXPECT_TRUE(GroupEnd());
    EXPECT_TRUE(AddEditText(26, 27, 28, 29));
    EXPECT_TRUE(AddEditNumberArrows(30, 31, 32, 33));
    EXPECT_TRUE(AddEditNumberArrows(34, 35, 36, 37));
    EXPECT_TRUE(SetReal(34, 38.5, -39, 40, 0.25, host::FORMAT_LONG));
    EXPECT_TRUE(AddComboBox(41, 42, 43, 44));
    EXPECT_TRUE(AddChild(41, 45, "First"));
    EXPECT_TRUE(AddChild(41, 46, "Second"));
    EXPECT_TRUE(GroupEnd());
    EXPECT_TRUE(AddSeparatorV(47, 48));
    EXPECT_TRUE(AddListView(49, 50, 51, 52));
    host::BaseContainer settings;
    settings.SetLong(53, 54);
    EXPECT_NE(AddCustomGui(55, host::CUSTOMGUI_BITMAPBUTTON, "Picture", 56, 57, 58, settings),
              nullptr);
    EXPECT_TRUE(Enable(26, host::FALSE));
    EXPECT_TRUE(MenuSubBegin("File"));
    EXPECT_TRUE(MenuAddString(60, "New"));
    EXPECT_TRUE(MenuAddSeparator());
    EXPECT_TRUE(MenuSubBegin("Recent"));
    EXPECT_TRUE(MenuAddString(61, "One"));
    EXPECT_TRUE(MenuInitString(61, host::FALSE, host::TRUE));
    EXPECT_TRUE(MenuSubEnd());
    EXPECT_TRUE(MenuAddString(62, "Save"));
    EXPECT_TRUE(MenuSubEnd());
    EXPECT_TRUE(MenuSubBegin("Edit"));
    EXPECT_FALSE(MenuFinished()) << "a sub-menu is open";
    EXPECT_TRUE(MenuFinished());
    EXPECT_TRUE(MenuAddString(63, "Help"));
    return host::TRUE;
  }
};

void Print(const engine::Gadget& gadget, std::ostream& out) {
  const bool isRanged = gadget.kind == engine::GadgetKind::NumberField;
  out << "(" << static_cast<int>(gadget.kind) << " " << gadget.id << " " << gadget.flags << " "
      << gadget.width << "x" << gadget.height << " '" << gadget.text.ToUtf8() << "'";
  for (const host::LONG number :
       {gadget.columns, gadget.rows, gadget.spaceX, gadget.spaceY, gadget.borderLeft,
        gadget.borderTop, gadget.borderRight, gadget.borderBottom})
    if (gadget.columns != 0) out << " " << number;
  if (isRanged) {
    out << " " << gadget.value.GetReal() << " in " << gadget.min << ".." << gadget.max << " by "
        << gadget.step << " as " << gadget.format;
  }
  for (const engine::Choice& choice : gadget.choices)
    out << " " << choice.id << "=" << choice.text.ToUtf8();
  if (gadget.settings.GetCount() > 0) out << " set " << gadget.settings.GetLong(53);
  out << (gadget.enabled ? "" : " off");
  for (const auto& child : gadget.children) {
    out << "\n";
    Print(*child, out);
  }
  out << ")";
}

void Print(const std::vector<engine::MenuEntry>& entries, std::ostream& out) {
  for (const engine::MenuEntry& entry : entries) {
    out << (entry.separator ? "-" : entry.text.ToUtf8()) << entry.id << (entry.enabled ? "" : "off")
        << (entry.checked ? "x" : "") << "[";
    Print(entry.children, out);
    out << "]";
  }
}

TEST(DialogLayout, AButtonKeepsItsPictureWhereThereIsNoOther) {
  Furnished dialog;
  ASSERT_TRUE(dialog.Open(0, 0, 0, 0, 0, 0, 0));
  auto* button = static_cast<host::BitmapButtonCustomGui*>(
      dialog.FindCustomGui(55, host::CUSTOMGUI_BITMAPBUTTON));
  const host::Filename picture(TEST_SOURCE_DIR "/res/default_image.tif");
  Watcher watcher;
  EXPECT_TRUE(button->SetImage(picture));
  EXPECT_FALSE(button->SetImage("/missing.tif"));
  EXPECT_EQ(engine::FindGadget(dialog, 55)->image, picture);
  EXPECT_TRUE(button->SetImage(picture));
  EXPECT_EQ(watcher.seen, (std::vector<std::string>{"changed 55", "changed 55"}));
}

TEST(DialogLayout, IsWhatThePluginAskedFor) {
  Furnished dialog;
  ASSERT_TRUE(dialog.Open(0, 0, 0, 0, 0, 0, 0));
  EXPECT_EQ(engine::DialogTitle(dialog), "Furnished");
  std::ostringstream layout;
  Print(engine::DialogRoot(dialog), layout);
  const std::string real = std::to_string(host::FORMAT_REAL);
  EXPECT_EQ(layout.str(),
            "(0 0 0 0x0 ''\n(0 10 1 0x0 'Outer' 2 3 4 5 6 7 8 9\n(0 0 11 0x0 'Inner' "
            "12 13 0 0 0 0 0 0\n(1 14 15 16x17 'Button')\n(2 18 19 20x21 "
            "'Box')\n(3 22 23 24x25 'Text'))\n(4 26 27 28x29 '' off)\n(5 30 31 "
            "32x33 '' 0 in -1.79769e+308..1.79769e+308 by 1 as " +
                real + ")\n(5 34 35 36x37 '' 38.5 in -39..40 by 0.25 as " +
                std::to_string(host::FORMAT_LONG) +
                ")\n(6 41 42 43x44 '' 45=First 46=Second))\n(7 0 48 0x47 '')\n(8 49 "
                "50 51x52 '')\n(9 55 56 57x58 'Picture' set 54))");
  std::ostringstream menus;
  Print(engine::DialogMenus(dialog), menus);
  EXPECT_EQ(menus.str(), "File0[New60[]-0[]Recent0[One61offx[]]Save62[]]Edit0[]Help63[]");
}

}  // namespace
