// The dialog: its gadgets and menus, the list, the preview button, renaming and deleting.
#include <fstream>

#include "tests/source/StageTest.h"

namespace stagemarks {
namespace {

class DialogTest : public StageTest {
 protected:
  // A gadget with its kind, flags, size and text, and below it its children: the contract of the
  // window layout.
  static std::string Tree(const engine::Gadget& gadget, int depth) {
    static const CHAR* const kinds[] = {"group",  "button", "check", "static", "edit",
                                        "number", "combo",  "line",  "list",   "bitmap"};
    std::string text(static_cast<std::size_t>(depth) * 2, ' ');
    text += kinds[static_cast<int>(gadget.kind)] + (" " + std::to_string(gadget.id)) + " " +
            std::to_string(gadget.flags);
    if (gadget.kind == engine::GadgetKind::Group) {
      text +=
          " " + Numbers({gadget.columns, gadget.rows}) + "; " +
          Numbers({gadget.spaceX, gadget.spaceY}) + "; " +
          Numbers({gadget.borderLeft, gadget.borderTop, gadget.borderRight, gadget.borderBottom});
    }
    if (gadget.width != 0 || gadget.height != 0)
      text += " " + Numbers({gadget.width, gadget.height});
    if (gadget.text.Content()) text += " \"" + gadget.text.ToUtf8() + "\"";
    for (const engine::Choice& choice : gadget.choices)
      text += " " + std::to_string(choice.id) + ":" + choice.text.ToUtf8();
    text += "\n";
    for (const auto& child : gadget.children) text += Tree(*child, depth + 1);
    return text;
  }

  void MakeFolder(const std::string& path) { ASSERT_TRUE(Services().files.MakeFolder(path)); }

  static std::string Numbers(std::initializer_list<LONG> numbers) {
    std::string text;
    for (const LONG number : numbers) text += (text.empty() ? "" : " ") + std::to_string(number);
    return text;
  }

  static std::string Menus(const std::vector<engine::MenuEntry>& entries,
                           const std::string& indent) {
    std::string text;
    for (const engine::MenuEntry& entry : entries) {
      text += indent +
              (entry.separator
                   ? "---"
                   : (entry.id != 0 ? std::to_string(entry.id) + " " : "") + entry.text.ToUtf8()) +
              "\n";
      text += Menus(entry.children, indent + "  ");
    }
    return text;
  }
};

TEST_F(DialogTest, TheGadgetsStandInTheirOrder) {
  std::string tree;
  for (const auto& child : engine::DialogRoot(Dialog()).children) tree += Tree(*child, 0);
  EXPECT_EQ(tree,
            "group 10001 63 0 3; 0 12; 15 11 26 25\n"
            "  group 10002 63 1 0; 4 4; 5 5 5 0\n"
            "    group 10003 63 1 0; 4 4; 5 5 5 0\n"
            "      group 10004 63 2 0; 4 4; 0 0 0 0\n"
            "        list 10005 63 3932160 1966080\n"
            "        bitmap 10006 1 2621440 1966080 \"myBitmapButton\"\n"
            "      group 10007 57 5 0; 4 4; 0 5 0 0\n"
            "        button 10008 57 \"Load\"\n"
            "        line 0 0\n"
            "        button 10009 57 \"Delete\"\n"
            "        line 0 0\n"
            "        button 10011 57 \"Rename\"\n"
            "    group 10012 57 0 2; 4 4; 5 5 5 0\n"
            "      edit 10013 56 466 0\n"
            "    group 10022 9 2 0; 10 4; 5 10 5 5\n"
            "      button 10023 9 \"Record Element\"\n"
            "      check 10045 8 \"Generate Preview Image\"\n"
            "    group 10024 57 2 0; 4 4; 5 10 5 0\n"
            "      button 10025 9 \"Generate .C4D Files\"\n"
            "      combo 10026 57 250 0 10027:As Save File 10028:As Save File (Into Folders) "
            "10029:As Save Project "
            "10030:As Save Project (One Tex Folder)\n"
            "    group 10040 57 4 0; 5 4; 5 5 5 5\n"
            "      check 10041 9 \"Change Frame Range  \"\n"
            "      number 10042 57\n"
            "      static 10043 9 \"to\"\n"
            "      number 10044 57\n");
  EXPECT_EQ(engine::DialogTitle(Dialog()), String("Stagemarks"));
  EXPECT_TRUE(engine::FindGadget(Dialog(), kPreviewButton)->settings.GetBool(BITMAPBUTTON_BORDER));
}

TEST_F(DialogTest, TheMenusStandInTheirOrder) {
  EXPECT_EQ(
      Menus(engine::DialogMenus(Dialog()), ""),
      "Edit\n  10035 Check All Elements\n  10036 Uncheck All Elements\n  10053 Invert Checked "
      "Elements\n  ---\n"
      "  10046 Update Checked Elements\n  10047 Set Selected Objects on Checked Elements\n"
      "  10048 Set Selected Tags on Checked Elements\n  10049 Set Selected Layers on Checked "
      "Elements\n"
      "  10050 Set Render Camera on Checked Elements\n  ---\n  10037 Delete Checked Elements\n"
      "  10038 Delete All Elements\n  ---\n  10039 Clean Material Editor\n"
      "Options\n  10060 Save As Default Preferences\n  ---\n  10019 Objects\n  10017 Layers\n  "
      "10016 Render Settings\n"
      "  10018 Active Camera\n  10020 Materials\n  10021 Compositing Tags\n  10054 Sketch Render "
      "Tags\n"
      "  10055 Sketch Style Tags\n  10056 VRay Compositing Tags\n  10057 VRay Physical Camera "
      "Tags\n"
      "  10058 VRay Camera Dome Tags\n  10059 Mental Ray Camera Tags\n"
      "Help\n  10051 Help\n  10052 About Stagemarks\n");
}

TEST_F(DialogTest, FieldsStartWithTheirInitialValuesAtEachOpening) {
  Tick(kGeneratePreview, true);
  Tick(kChangeFrameRange, true);
  engine::TypeNumber(Dialog(), kFrameTo, 90);
  engine::ChooseFromCombo(Dialog(), kFileLayout, kAsSaveFile);
  Dialog().Close();
  App().ExecuteCommand(kPluginId);
  Bool preview = TRUE;
  Bool range = TRUE;
  LONG layout = 0;
  Real to = -1;
  Dialog().GetBool(kGeneratePreview, preview);
  Dialog().GetBool(kChangeFrameRange, range);
  Dialog().GetLong(kFileLayout, layout);
  Dialog().GetReal(kFrameTo, to);
  EXPECT_EQ(std::make_tuple(preview, range, layout, to),
            std::make_tuple(FALSE, FALSE, kAsSaveFileFolders, Real{0}));
  for (const LONG field : {kFrameFrom, kFrameTo}) {
    const engine::Gadget* gadget = engine::FindGadget(Dialog(), field);
    EXPECT_EQ(std::make_tuple(gadget->min, gadget->max, gadget->step, gadget->format),
              std::make_tuple(0.0, 300000.0, 1.0, 1718382183));
  }
}

TEST_F(DialogTest, TheListShowsMarkCheckNameAndTimeInThisOrder) {
  std::string columns;
  for (const engine::Column& column : engine::FindGadget(Dialog(), kList)->listColumns) {
    columns += std::to_string(column.id) + ":" + std::to_string(column.kind) + " ";
  }
  EXPECT_EQ(columns, "10033:7633012 10032:6514795 10031:7633012 10034:7633012 ");
}

TEST_F(DialogTest, RowsAreSortedByNameAndLetterCase) {
  for (const CHAR* name : {"b", "C", "a", "B", "Ärger", "a10", "a2"}) Record(name);
  EXPECT_EQ(Rows(), "[ ] B\n[ ] C\n[ ] a\n[ ] a10\n[ ] * a2\n[ ] b\n[ ] Ärger\n");
}

struct TimeCase {
  LocalFileTime time;
  const CHAR* shown;
};

TEST_F(DialogTest, TimesAreShownWithTwoDigitsAndAShortenedYear) {
  const TimeCase cases[] = {{{2011, 3, 5, 14, 7, 59}, "  03/05/11 14:07\n"},
                            {{1999, 12, 31, 0, 0, 0}, "  12/31/99 00:00\n"},
                            {{2005, 10, 10, 9, 59, 1}, "  10/10/05 09:59\n"},
                            {{987, 1, 1, 1, 1, 1}, "  01/01/7 01:01\n"}};
  Person().AnswerOthers(true);
  for (const TimeCase& one : cases) {
    Services().clock.now = one.time;
    Record("A");
    EXPECT_EQ(Times(), one.shown);
  }
}

TEST_F(DialogTest, ExactlyOneSelectedRowYieldsAName) {
  for (const CHAR* name : {"A", "B", "C"}) Record(name);
  SelectRows({"B"});
  EXPECT_EQ(NameField(), "B");
  SelectRows({"A", "C"});
  EXPECT_EQ(NameField(), "");
  SelectRows({"A", "B"});
  EXPECT_EQ(NameField(), "");
  SelectRows({"C"});
  SelectRows({});
  EXPECT_EQ(NameField(), "");
}

TEST_F(DialogTest, ChecksAreSetClearedAndInvertedAndSurviveARebuild) {
  for (const CHAR* name : {"A", "B", "C"}) Record(name);
  Check("B");
  EXPECT_EQ(Rows(), "[ ] A\n[x] B\n[ ] * C\n");
  Menu(kInvertChecked);
  EXPECT_EQ(Rows(), "[x] A\n[ ] B\n[x] * C\n");
  Rename("B", "Z");
  EXPECT_EQ(Rows(), "[x] A\n[x] * C\n[ ] Z\n");
  Rename("A", "Y");
  EXPECT_EQ(Rows(), "[x] * C\n[ ] Y\n[ ] Z\n") << "a check mark belongs to a name";
  Menu(kCheckAll);
  EXPECT_EQ(Rows(), "[x] * C\n[x] Y\n[x] Z\n");
  Menu(kUncheckAll);
  EXPECT_EQ(Rows(), "[ ] * C\n[ ] Y\n[ ] Z\n");
}

// The host draws a list when it is told of a change, and not before.
TEST_F(DialogTest, ChangingTheChecksTellsTheHostOnce) {
  struct Watcher : engine::DialogObserver {
    Watcher() { engine::AddDialogObserver(*this); }
    ~Watcher() override { engine::RemoveDialogObserver(*this); }
    void DialogOpened(GeDialog&) override {}
    void DialogClosed(GeDialog&) override {}
    void DialogChanged(GeDialog&, const engine::Gadget* gadget) override {
      told += gadget && gadget->id == kList;
    }
    int told = 0;
  };
  for (const CHAR* name : {"A", "B"}) Record(name);
  Watcher watcher;
  for (const LONG entry : {kCheckAll, kUncheckAll, kInvertChecked}) {
    watcher.told = 0;
    engine::ChooseMenu(Dialog(), entry);
    EXPECT_EQ(watcher.told, 1) << entry;
  }
}

TEST_F(DialogTest, MarkingAnEmptyListDoesNothing) {
  for (const LONG entry : {kCheckAll, kUncheckAll, kInvertChecked}) EXPECT_TRUE(Menu(entry));
  EXPECT_EQ(Rows() + Transcript(), "");
}

TEST_F(DialogTest, RenamingChangesRecordEntryRenderCopyAndPreview) {
  PretendSaved("shot.v2.c4d");
  Record("A");
  Record("B");
  EXPECT_TRUE(Press(kRename)) << "nothing selected";
  const std::string folder = Folder() + "/shot.v2_SM";
  MakeFolder(folder);
  std::ofstream(folder + "/A.tif") << "picture";
  EXPECT_TRUE(Rename("A", "Finale"));
  EXPECT_EQ(Rows(), "[ ] * B\n[ ] Finale\n");
  EXPECT_EQ(Element(0).GetString(kName), String("Finale"));
  EXPECT_EQ(SettingsText(), "* Render Settings 1280\n  B 1280\n  Finale 1280\n");
  EXPECT_TRUE(GeFExist(Filename(String((folder + "/Finale.tif").c_str()))));
  EXPECT_FALSE(GeFExist(Filename(String((folder + "/A.tif").c_str()))));
  EXPECT_TRUE(Rename("B", "C")) << "without a preview";
  Transcript();
  EXPECT_TRUE(Rename("C", ""));
  EXPECT_EQ(Transcript(), "tell: You must enter a name for this element.\n");
  EXPECT_EQ(Rows(), "[ ] * C\n[ ] Finale\n");
}

TEST_F(DialogTest, RenamingToATakenNameMakesTwoOfIt) {
  Record("A");
  Record("B");
  Rename("B", "A");
  EXPECT_EQ(Rows(), "[ ] A\n[ ] * A\n");
}

TEST_F(DialogTest, DeletingAsksAndEmptiesRecordAndEntryInPlace) {
  PretendSaved("shot.c4d");
  Record("A");
  Record("B");
  MakeFolder(Folder() + "/shot_SM");
  std::ofstream(Folder() + "/shot_SM/A.tif") << "picture";
  Transcript();
  EXPECT_TRUE(Press(kDelete)) << "nothing selected";
  Answer(false);
  EXPECT_TRUE(Delete("A"));
  EXPECT_EQ(Transcript(),
            "ask: Are you sure you want to delete this element?  This cannot be undone. -> no\n");
  EXPECT_EQ(Rows(), "[ ] A\n[ ] * B\n");
  Answer(true);
  EXPECT_TRUE(Delete("A"));
  EXPECT_EQ(Rows(), "[ ] * B\n");
  EXPECT_EQ(StoreText(kRecordStore).substr(0, 6), "0 {}\n1");
  EXPECT_EQ(StoreText(kListStore).substr(0, 16), "0 {}\n20003 1\n1 #");
  EXPECT_EQ(SettingsText(), "* Render Settings 1280\n  B 1280\n");
  EXPECT_FALSE(GeFExist(Filename(String((Folder() + "/shot_SM/A.tif").c_str()))));
  EXPECT_FALSE(Undo()) << "a deletion is final";
}

TEST_F(DialogTest, DeletingAnElementWithACarriedOverCopyFreesTheOtherElementsCopy) {
  Record("A");
  OnlyOptions({});
  Record("B");
  Answer(true);
  Delete("B");
  EXPECT_EQ(SettingsText(), "* Render Settings 1280\n");
  EXPECT_EQ(Part(0, kRender), "25000 ->gone\n");
}

TEST_F(DialogTest, SelectingARowShowsItsPreviewElseTheDefaultImage) {
  PretendSaved("shot.c4d");
  Record("A");
  Record("B");
  BaseBitmap* picture = BaseBitmap::Alloc();
  picture->Init(4, 3);
  MakeFolder(Folder() + "/shot_SM");
  picture->Save(Filename(String((Folder() + "/shot_SM/A.tif").c_str())), FILTER_TIF);
  BaseBitmap::Free(picture);
  EXPECT_EQ(Picture(), "default_image.tif");
  SelectRows({"A"});
  EXPECT_EQ(Picture(), "A.tif");
  SelectRows({"B"});
  EXPECT_EQ(Picture(), "default_image.tif");
  SelectRows({"A"});
  EventAdd();
  Deliver();
  EXPECT_EQ(Picture(), "default_image.tif")
      << "a change of the document shows the default image again";
  EXPECT_EQ(NameField(), "A") << "and keeps the name field";
  SelectRows({"A"});
  Answer(true);
  Press(kDelete);
  EXPECT_EQ(Picture(), "default_image.tif") << "whoever deletes an element tells of a change";
}

TEST_F(DialogTest, AboutTellsTheVersion) {
  Menu(kAbout);
  EXPECT_EQ(Transcript(),
            "tell: Stagemarks V0.713\n\nRecords, recalls and exports the states of a scene.\n");
}

// The manual lies beside the plug-in wherever the build could set it.
TEST_F(DialogTest, HelpOpensTheManualWhereThereIsOne) {
  const std::string manual = TEST_PLUGIN_DIR "/Stagemarks/help/SM_Manual.pdf";
  const bool there = GeFExist(Filename(String(manual.c_str())));
  EXPECT_EQ(there, TEST_WITH_MANUAL);
  EXPECT_TRUE(Menu(kHelp));
  EXPECT_EQ(Transcript(), there ? "view: " + manual + "\n" : "");
}

}  // namespace
}  // namespace stagemarks
