// One scene file per checked element: where the files go, what is in them, and what becomes of the
// open documents when something cannot be written.
#include <algorithm>
#include <filesystem>

#include "engine/scene/SceneDump.h"
#include "engine/scenefile/SceneFile.h"
#include "tests/source/StageTest.h"
#include "tests/support/ScratchFolder.h"

namespace stagemarks {
namespace {

namespace fs = std::filesystem;

constexpr LONG kLayouts[] = {kAsSaveFile, kAsSaveFileFolders, kAsSaveProject,
                             kAsSaveProjectOneFolder};

class ExportTest : public StageTest {
 protected:
  void SetUp() override {
    fs::create_directories(Out());
    fs::create_directories(Folder() + "/scenes");
    Doc().SetDocumentPath(Filename((Folder() + "/scenes").c_str()));
    Doc().SetDocumentName("Scene.c4d");
  }
  std::string Out(const std::string& file = "") const {
    return Folder() + "/out" + (file.empty() ? "" : "/" + file);
  }
  std::string Work(const std::string& file) const { return Folder() + "/scenes/" + file; }

  void Generate(LONG layout) {
    engine::ChooseFromCombo(Dialog(), kFileLayout, layout);
    Person().ChooseNext(Out());
    Press(kGenerateFiles);
  }
  // Every file and empty folder below the chosen folder, sorted, a line each.
  std::string Tree() const {
    std::vector<std::string> paths;
    for (const auto& entry : fs::recursive_directory_iterator(Out())) {
      if (!entry.is_directory() || fs::is_empty(entry))
        paths.push_back(fs::relative(entry, Out()).string());
    }
    std::sort(paths.begin(), paths.end());
    std::string text;
    for (const std::string& path : paths) text += path + "\n";
    return text;
  }
  // The state in an exported file.
  std::string StateIn(const std::string& file) {
    auto opened = engine::OpenSceneFile(Services().Get(), Out(file));
    if (!opened) return opened.Message();
    const engine::OwnedDocument doc = opened.Take();
    const std::string state = engine::DumpState(*doc);
    return state;
  }
  // The states that loading these elements one after the other onto one copy gives, and the
  // document as it was.
  std::vector<std::string> StatesByLoading(const std::vector<std::string>& names) {
    BaseDocument* const original = &Doc();
    BaseDocument* const copy =
        static_cast<BaseDocument*>(original->GetClone(COPY_DOCUMENT, nullptr));
    InsertBaseDocument(copy);
    SetActiveDocument(copy);
    Deliver();
    std::vector<std::string> states;
    for (const std::string& name : names) {
      Load(name);
      states.push_back(engine::DumpState(*copy));
    }
    SetActiveDocument(original);
    KillDocument(copy);
    Deliver();
    return states;
  }
  // Two elements: in the second one only the objects are recorded.
  void RecordTwo() {
    BaseObject* box = Object("Box", nullptr, Ocube);
    Texture(box, Material("Red"));
    Layer("L");
    Doc().GetActiveRenderData()->GetDataInstance()->SetLong(RDATA_XRES, 800);
    SetSwitches(box, MODE_ON, MODE_OFF, TRUE);
    Record("A");
    OnlyOptions({Option::Objects});
    ClearWork("A");
    SetSwitches(box, MODE_OFF, MODE_ON, FALSE);
    Doc().GetActiveRenderData()->GetDataInstance()->SetLong(RDATA_XRES, 400);
    Record("B");
    for (const OptionRow& row : kOptions) {
      if (!Marked(row.id)) Menu(row.id);
    }
    Doc().GetActiveRenderData()->GetDataInstance()->SetLong(RDATA_XRES, 200);
    Menu(kCheckAll);
    Transcript();
  }
  // Loading empties what the next recording would carry over.
  void ClearWork(const std::string& name) { Load(name); }
};

TEST_F(ExportTest, EveryLayoutWritesTheStatesThatLoadingInListOrderGives) {
  RecordTwo();
  const std::string before = engine::DumpDocument(Doc());
  const std::vector<std::string> states = StatesByLoading({"A", "B"});
  EXPECT_NE(states[0], states[1]);
  BaseDocument* const original = &Doc();
  App().NewDocument()->SetDocumentName("Another.c4d");
  SetActiveDocument(original);
  Deliver();
  const std::string trees[] = {
      "Scene A.c4d\nScene B.c4d\n", "Scene A/Scene A.c4d\nScene B/Scene B.c4d\n",
      "Scene A/Scene A.c4d\nScene A/tex\nScene B/Scene B.c4d\nScene B/tex\n",
      "Scene A.c4d\nScene B.c4d\ntex\n"};
  for (std::size_t i = 0; i < std::size(kLayouts); ++i) {
    fs::remove_all(Out());
    fs::create_directory(Out());
    Generate(kLayouts[i]);
    EXPECT_EQ(Tree(), trees[i]);
    const bool folders = i == 1 || i == 2;
    EXPECT_EQ(StateIn(folders ? "Scene A/Scene A.c4d" : "Scene A.c4d"), states[0]) << i;
    EXPECT_EQ(StateIn(folders ? "Scene B/Scene B.c4d" : "Scene B.c4d"), states[1]) << i;
    EXPECT_EQ(&Doc(), original);
    EXPECT_EQ(App().Documents().size(), 2U);
  }
  EXPECT_EQ(engine::DumpDocument(Doc()), before);
  EXPECT_EQ(Rows(), "[x] A\n[x] * B\n");
}

TEST_F(ExportTest, TheSecondElementInheritsWhatItDoesNotRecord) {
  RecordTwo();
  Generate(kAsSaveFile);
  auto opened = engine::OpenSceneFile(Services().Get(), Out("Scene B.c4d"));
  ASSERT_TRUE(opened) << opened.Message();
  const engine::OwnedDocument doc = opened.Take();
  EXPECT_EQ(doc->GetActiveRenderData()->GetDataInstance()->GetLong(RDATA_XRES), 800);
  EXPECT_EQ(Switches(doc->GetFirstObject()), "1 0 0");
}

TEST_F(ExportTest, AsksInOrderAndStopsWhereItMust) {
  Press(kGenerateFiles);
  EXPECT_EQ(Transcript(), "tell: You must check at least one stagemark!\n");
  RecordTwo();
  Press(kGenerateFiles);
  EXPECT_EQ(Transcript(),
            "tell: Warning! This will overwrite files in the chosen directory if they have the "
            "same name as your selected "
            "Stagemarks!\nchoose: Choose a Directory to Save Generated Files -> (canceled)\n");
  EXPECT_EQ(Tree(), "");
}

TEST_F(ExportTest, NamesKeepTheirDots) {
  Doc().SetDocumentName("shot.v3.c4d");
  Record("v1.2");
  Menu(kCheckAll);
  Generate(kAsSaveFileFolders);
  EXPECT_EQ(Tree(), "shot.v3 v1.2/shot.v3 v1.2.c4d\n");
}

TEST_F(ExportTest, TheFrameRangeOverridesEveryElementsOwn) {
  RecordTwo();
  engine::TypeNumber(Dialog(), kFrameFrom, 5);
  engine::TypeNumber(Dialog(), kFrameTo, 60);
  Tick(kChangeFrameRange, true);
  Generate(kAsSaveFile);
  for (const char* file : {"Scene A.c4d", "Scene B.c4d"}) {
    auto opened = engine::OpenSceneFile(Services().Get(), Out(file));
    ASSERT_TRUE(opened) << opened.Message();
    const engine::OwnedDocument doc = opened.Take();
    const BaseContainer data = doc->GetActiveRenderData()->GetData();
    EXPECT_EQ(data.GetLong(RDATA_FRAMESEQUENCE), 0);
    EXPECT_EQ(data.GetTime(RDATA_FRAMEFROM), BaseTime(5, 30));
    EXPECT_EQ(data.GetTime(RDATA_FRAMETO), BaseTime(60, 30));
  }
  EXPECT_EQ(Doc().GetActiveRenderData()->GetDataInstance()->GetTime(RDATA_FRAMETO),
            BaseTime(90, 30));
}

class CacheTest : public ExportTest {
 protected:
  void SetUp() override {
    ExportTest::SetUp();
    effect_ = BaseVideoPost::Alloc(VPglobalillumination);
    Doc().GetActiveRenderData()->InsertVideoPost(effect_);
    fs::create_directory(Work("illum"));
    tests::WriteText(Work("illum/Scene.gi"), "scene's");
    tests::WriteText(Work("own.gi"), "own");
    Doc().SetDocumentName("Scene.c4d");
  }
  void RecordWith(LONG useFile, LONG ownFile) {
    BaseContainer& data = *effect_->GetDataInstance();
    data.SetLong(GI_USE_CACHE_FILE, useFile);
    data.SetLong(GI_OWN_CACHE_FILE, ownFile);
    data.SetFilename(GI_CACHE_FILENAME, Filename(Work("own.gi").c_str()));
    Record("A");
    Menu(kCheckAll);
  }
  BaseVideoPost* effect_ = nullptr;
};

TEST_F(CacheTest, TheScenesCacheIsReadFromOneFolderAndWrittenToTheOther) {
  RecordWith(1, 0);
  Generate(kAsSaveFile);
  EXPECT_EQ(Tree(), "Illum/Scene A.gi\nScene A.c4d\n");
  EXPECT_EQ(tests::ReadText(Out("Illum/Scene A.gi")), "scene's");
  tests::WriteText(Work("illum/Scene.gi"), "newer");
  Generate(kAsSaveFile);
  EXPECT_EQ(tests::ReadText(Out("Illum/Scene A.gi")), "newer");
}

TEST_F(CacheTest, AnEffectsOwnCacheGoesIntoTheElementsFolder) {
  RecordWith(1, 1);
  tests::WriteText(Out("unrelated"), "");
  Generate(kAsSaveFileFolders);
  EXPECT_EQ(Tree(), "Scene A/Illum/Scene A.gi\nScene A/Scene A.c4d\nunrelated\n");
  EXPECT_EQ(tests::ReadText(Out("Scene A/Illum/Scene A.gi")), "own");
}

TEST_F(CacheTest, WithoutACacheFileThereIsNoFolder) {
  RecordWith(0, 1);
  Generate(kAsSaveFile);
  EXPECT_EQ(Tree(), "Scene A.c4d\n");
  fs::remove_all(Work("illum"));
  fs::remove(Work("own.gi"));
  RecordWith(1, 1);
  Generate(kAsSaveFile);
  EXPECT_EQ(Tree(), "Scene A.c4d\n");
}

class ExportFailureTest : public ExportTest {};

TEST_F(ExportFailureTest, AFailedSaveEndsTheLoopAndCleansUp) {
  RecordTwo();
  BaseDocument* const original = &Doc();
  tests::WriteText(Out("Scene A.c4d"), "old");
  Services().files.Break(1, tests::Fault::Fail, engine::Operation::ReplaceFile);
  Generate(kAsSaveFile);
  EXPECT_NE(Transcript().find("tell: An error has occurred while saving the Stagemark!\n"),
            std::string::npos);
  EXPECT_EQ(Tree(), "Scene A.c4d\n");
  EXPECT_EQ(tests::ReadText(Out("Scene A.c4d")), "old");
  EXPECT_EQ(&Doc(), original);
  EXPECT_EQ(App().Documents().size(), 1U);
}

TEST_F(ExportFailureTest, ElementFoldersThatCannotBeMadeLeaveTheCopyActive) {
  RecordTwo();
  BaseDocument* const original = &Doc();
  tests::WriteText(Out("Scene B"), "a file");
  Generate(kAsSaveFileFolders);
  EXPECT_NE(Transcript().find("tell: Could not create directory to save Stagemark B in!\n"),
            std::string::npos);
  EXPECT_EQ(Tree(), "Scene A/Scene A.c4d\nScene B\n");
  EXPECT_NE(&Doc(), original);
  EXPECT_EQ(App().Documents().size(), 2U);
}

// The project layout passes over the folder and hears of it when the save fails.
TEST_F(ExportFailureTest, AProjectsElementFolderIsMissedByTheSave) {
  RecordTwo();
  BaseDocument* const original = &Doc();
  tests::WriteText(Out("Scene A"), "a file");
  Generate(kAsSaveProject);
  EXPECT_NE(Transcript().find("tell: An error has occurred while saving the Stagemark!\n"),
            std::string::npos);
  EXPECT_EQ(tests::ReadText(Out("Scene A")), "a file");
  EXPECT_EQ(&Doc(), original);
}

TEST_F(ExportFailureTest, AFolderInPlaceOfTheSceneFileStays) {
  RecordTwo();
  fs::create_directories(Out("Scene A.c4d/full"));
  Generate(kAsSaveFile);
  EXPECT_NE(Transcript().find("tell: An error has occurred while saving the Stagemark!\n"),
            std::string::npos);
  EXPECT_EQ(Tree(), "Scene A.c4d/full\n");
}

// Whichever operation goes wrong: files are whole or not there, and the user's document is active
// and alone.
TEST_F(ExportFailureTest, AnyFailingOperationLeavesWholeFilesAndTheUsersDocument) {
  RecordTwo();
  BaseShader* shader = BaseShader::Alloc(Xbitmap);
  shader->GetDataInstance()->SetFilename(BITMAPSHADER_FILENAME, Filename(Work("wood.png").c_str()));
  Doc().GetFirstMaterial()->InsertShader(shader);
  tests::WriteText(Work("wood.png"), "wood");
  BaseDocument* const original = &Doc();
  const std::string before = engine::DumpDocument(Doc());
  const std::vector<std::string> states = StatesByLoading({"A", "B"});
  bool reached = true;
  for (std::size_t number = 1; reached; ++number) {
    fs::remove_all(Out());
    fs::create_directory(Out());
    tests::FaultyFileSystem& faulty = Services().files;
    faulty.Break(number, tests::Fault::Fail);
    Generate(kAsSaveProject);
    reached = faulty.Count() >= number;
    faulty.Mend();
    ASSERT_EQ(&Doc(), original) << number;
    ASSERT_EQ(App().Documents().size(), 1U) << number;
    for (const auto& entry : fs::recursive_directory_iterator(Out())) {
      const std::string path = entry.path().string();
      if (path.ends_with(".png")) {
        EXPECT_EQ(tests::ReadText(path), "wood") << number;
      }
      if (path.ends_with(".c4d")) {
        EXPECT_EQ(StateIn(fs::relative(path, Out())), states[path.ends_with("A.c4d") ? 0 : 1])
            << number;
      }
    }
  }
  EXPECT_EQ(
      Tree(),
      "Scene A/Scene A.c4d\nScene A/tex/wood.png\nScene B/Scene B.c4d\nScene B/tex/wood.png\n");
  EXPECT_EQ(engine::DumpDocument(Doc()), before);
}

class BadExportNameTest : public ExportTest,
                          public testing::WithParamInterface<std::pair<const char*, std::string>> {
};

TEST_P(BadExportNameTest, WritesNothingOutsideTheChosenFolder) {
  fs::create_directories(Out("Scene a"));
  tests::WriteText(Folder() + "/x.c4d", "kept");
  Record(GetParam().second);
  Menu(kCheckAll);
  for (const LONG layout : kLayouts) {
    BaseDocument* const original = &Doc();
    Generate(layout);
    if (&Doc() == original) continue;
    BaseDocument* const left = &Doc();
    SetActiveDocument(original);
    KillDocument(left);
    Deliver();
  }
  EXPECT_EQ(tests::Names(Folder()), "out scenes x.c4d");
  EXPECT_EQ(tests::ReadText(Folder() + "/x.c4d"), "kept");
  EXPECT_EQ(tests::Names(Folder() + "/scenes"), "");
}

INSTANTIATE_TEST_SUITE_P(Names, BadExportNameTest,
                         testing::Values(std::pair{"Parent", std::string("/../../x")},
                                         std::pair{"Absolute", std::string("/nowhere/x")},
                                         std::pair{"Backslash", std::string("\\..\\..\\x")},
                                         std::pair{"Nul", std::string("x\0y", 3)},
                                         std::pair{"Newline", std::string("x\ny")},
                                         std::pair{"Long", std::string(10000, 'n')},
                                         std::pair{"SubFolder", std::string("a/../../x")},
                                         std::pair{"Dots", std::string("..")},
                                         std::pair{"NotUtf8", std::string("\xFF")}),
                         [](const auto& test) { return std::string(test.param.first); });

}  // namespace
}  // namespace stagemarks
