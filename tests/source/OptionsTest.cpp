// The twelve options: where a choice is kept, and which one a document shows.
#include "tests/source/StageTest.h"
#include "tests/support/ScriptedServices.h"

namespace stagemarks {
namespace {

class OptionsTest : public StageTest {
 protected:
  // "1" or "0" for each option in their order, as the menu shows them.
  std::string Marks() const {
    std::string text;
    for (const OptionRow& row : kOptions) text += Marked(row.id) ? "1" : "0";
    return text;
  }

  // The world defaults as text; empty where there are none.
  static std::string Defaults() {
    const BaseContainer* kept = GetWorldPluginData(kPreferences);
    return kept ? tests::ContainerText(*kept, nullptr) : "";
  }

  void NewActiveDocument() {
    SetActiveDocument(App().NewDocument());
    Deliver();
  }

  static LONG Id(Option option) { return kOptions[IndexOf(option)].id; }
};

constexpr const CHAR* kAllOn = "111111111111";
constexpr const CHAR* kFrozen =
    "10019 1\n10017 1\n10016 1\n10018 1\n10020 1\n10021 1\n10054 1\n10055 1\n10056 1\n10057 "
    "1\n10058 1\n10059 1\n10061 1\n";

TEST_F(OptionsTest, AreAllOnAtFirst) {
  EXPECT_EQ(Marks(), kAllOn);
  EXPECT_EQ(Defaults(), "");
}

TEST_F(OptionsTest, TheFirstRecordingFreezesThemIntoTheDocument) {
  Record("A");
  EXPECT_EQ(StoreText(kPreferences), kFrozen);
  Menu(Id(Option::Layers));
  Record("B");
  EXPECT_EQ(Marks(), "101111111111");
  EXPECT_EQ(Store(kPreferences).GetBool(Id(Option::Layers)), FALSE)
      << "a later recording leaves the choice alone";
}

TEST_F(OptionsTest, ADocumentsOwnChoiceWinsOverTheDefaults) {
  BaseDocument* first = &Doc();
  Record("A");
  NewActiveDocument();
  for (const Option option : {Option::Layers, Option::MentalRayCameraTags}) Menu(Id(option));
  EXPECT_EQ(Marks(), "101111111110");
  NewActiveDocument();
  EXPECT_EQ(Marks(), "101111111110") << "a toggle changes the defaults of the session, too";
  SetActiveDocument(first);
  Deliver();
  EXPECT_EQ(Marks(), kAllOn);
}

// The document's own choice of "Objects" stays as the first recording froze it: the toggle reaches
// the defaults only, and the next change of the document shows the frozen choice again.
TEST_F(OptionsTest, TogglingObjectsDoesNotReachTheDocument) {
  Record("A");
  Menu(Id(Option::Objects));
  EXPECT_EQ(Marks(), "011111111111");
  EXPECT_EQ(StoreText(kPreferences), kFrozen);
  Object("Cube");
  Record("B");
  EXPECT_EQ(Part(1, kObjects), "") << "the flag is off while recording";
  EXPECT_EQ(Marks(), kAllOn);
  NewActiveDocument();
  EXPECT_EQ(Marks(), "011111111111");
}

TEST_F(OptionsTest, AToggleBeforeTheFirstRecordingIsNoChoiceYet) {
  Menu(Id(Option::Materials));
  Menu(Id(Option::Objects));
  EXPECT_EQ(StoreText(kPreferences), "10020 0\n");
  Deliver();
  EXPECT_EQ(Marks(), "011101111111");
  Record("A");
  EXPECT_EQ(StoreText(kPreferences),
            "10020 0\n10019 0\n10017 1\n10016 1\n10018 1\n10021 1\n10054 1\n10055 1\n10056 "
            "1\n10057 1\n10058 1\n10059 1\n10061 1\n");
}

TEST_F(OptionsTest, TogglingObjectsAloneStillMakesTheDocumentsContainer) {
  Menu(Id(Option::Objects));
  EXPECT_TRUE(HasStore(kPreferences));
  EXPECT_EQ(StoreText(kPreferences), "");
}

TEST_F(OptionsTest, SavingDefaultsTakesTheNoteAsTheDialogHasIt) {
  Menu(Id(Option::Layers));
  Menu(kSaveDefaults);
  EXPECT_EQ(Defaults(),
            "{10061 0, 10019 1, 10017 0, 10016 1, 10018 1, 10020 1, 10021 1, 10054 1, 10055 1, "
            "10056 1, 10057 1, 10058 1, 10059 1}");
  Record("A");
  Menu(kSaveDefaults);
  EXPECT_EQ(Defaults().substr(0, 17), "{10061 1, 10019 1");
  NewActiveDocument();
  EXPECT_EQ(Marks(), "101111111111")
      << "the defaults are read whether or not they say that they were saved";
  Menu(kSaveDefaults);
  EXPECT_EQ(Defaults().substr(0, 17), "{10061 0, 10019 1");
}

TEST_F(OptionsTest, FreezingCountsAsSavedAtOnce) {
  engine::TypeText(Dialog(), kNameField, "A");
  engine::PressButton(Dialog(), kRecord);
  engine::ChooseMenu(Dialog(), kSaveDefaults);
  EXPECT_EQ(Defaults().substr(0, 8), "{10061 1") << "before the host has told of the change";
}

TEST_F(OptionsTest, FreezingLooksAtTheDocumentThatIsRecorded) {
  Record("A");
  SetActiveDocument(App().NewDocument());
  engine::TypeText(Dialog(), kNameField, "B");
  engine::PressButton(Dialog(), kRecord);
  EXPECT_EQ(StoreText(kPreferences), kFrozen)
      << "before the dialog has heard of the other document";
}

TEST_F(OptionsTest, MarksStayWithoutADocument) {
  Menu(Id(Option::Layers));
  while (BaseDocument* doc = GetActiveDocument()) KillDocument(doc);
  Deliver();
  EXPECT_EQ(Marks(), "101111111111");
  EXPECT_FALSE(Menu(Id(Option::Layers)));
  EXPECT_EQ(Marks(), "101111111111");
}

// Four saved choices in which no two options are alike: one that is read as another one is seen.
TEST(DefaultOptions, AreReadAtTheNextStart) {
  tests::ScratchFolder folder;
  // The marks at a start, after which the options are brought to `wanted` and saved.
  const auto start = [&folder](const std::string& wanted) {
    tests::ScriptedServices services(folder.Path());
    engine::Application application(services.Get(), {});
    application.LoadPlugin(TEST_PLUGIN_DIR "/Stagemarks/Stagemarks.so");
    SetActiveDocument(application.NewDocument());
    application.ExecuteCommand(kPluginId);
    GeDialog& dialog = *engine::OpenDialogs().front();
    std::string marks;
    for (std::size_t i = 0; i < kOptions.size(); ++i) {
      marks += engine::FindMenuEntry(dialog, kOptions[i].id)->checked ? '1' : '0';
      if (marks[i] != wanted[i]) engine::ChooseMenu(dialog, kOptions[i].id);
    }
    engine::ChooseMenu(dialog, kSaveDefaults);
    return marks;
  };
  std::string before = kAllOn;
  for (const char* wanted : {"010101010101", "001100110011", "000011110000", "000000001111"}) {
    EXPECT_EQ(start(wanted), before);
    before = wanted;
  }
  EXPECT_EQ(start(before), before);
}

}  // namespace
}  // namespace stagemarks
