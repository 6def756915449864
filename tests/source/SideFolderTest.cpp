// The folder beside the scene file: which file is whose preview, and what renaming does to it.
#include <filesystem>

#include "tests/source/StageTest.h"
#include "tests/support/ScratchFolder.h"

namespace stagemarks {
namespace {

namespace fs = std::filesystem;

class SideFolderTest : public StageTest {
 protected:
  std::string Side(const std::string& file = "") const {
    return Folder() + "/shot_SM" + (file.empty() ? "" : "/" + file);
  }
  void Preview(const std::string& file) {
    fs::create_directory(Side());
    tests::WriteText(Side(file), "preview " + file);
  }
  // Records two elements and deletes the second; whether the file given for the first one is still
  // there.
  bool FirstKeepsItsFile(const std::string& first, const std::string& second,
                         const std::string& file) {
    PretendSaved("shot.c4d");
    Record(first);
    Record(second);
    Preview(file);
    Answer(true);
    Delete(second);
    return fs::exists(Side(file));
  }
};

TEST_F(SideFolderTest, RenamingTakesRecordEntrySettingsAndPreviewAlong) {
  PretendSaved("shot.c4d");
  Record("Old");
  Preview("Old.tif");
  Transcript();
  Rename("Old", "");
  EXPECT_EQ(Transcript(), "tell: You must enter a name for this element.\n");
  Rename("Old", "New");
  EXPECT_EQ(Transcript(), "");
  EXPECT_EQ(Rows(), "[ ] * New\n");
  EXPECT_EQ(Element(0).GetString(kName), String("New"));
  EXPECT_EQ(SettingsText(), "* Render Settings 1280\n  New 1280\n");
  EXPECT_EQ(tests::Names(Side()), "New.tif");
}

TEST_F(SideFolderTest, RenamingNeverDestroysAnotherPreview) {
  PretendSaved("shot.c4d");
  Record("A");
  Record("B");
  Preview("A.tif");
  Preview("B.tif");
  Rename("A", "B");
  EXPECT_EQ(Rows(), "[ ] B\n[ ] * B\n");
  EXPECT_EQ(tests::ReadText(Side("B.tif")), "preview B.tif");
  EXPECT_EQ(tests::ReadText(Side("A.tif")), "preview A.tif");
}

TEST_F(SideFolderTest, RenamingWithoutAPreviewReportsNothing) {
  PretendSaved("shot.c4d");
  Record("A");
  Transcript();
  Rename("A", "B");
  EXPECT_EQ(Transcript(), "");
  EXPECT_FALSE(fs::exists(Side()));
}

TEST_F(SideFolderTest, ANamesOwnDotsAreNoSuffix) {
  PretendSaved("shot.v2.c4d");
  fs::create_directory(Folder() + "/shot.v2_SM");
  tests::WriteText(Folder() + "/shot.v2_SM/v1.2.tif", "");
  Record("v1.2");
  Record("v1.3");
  Answer(true);
  Delete("v1.3");
  EXPECT_EQ(tests::Names(Folder() + "/shot.v2_SM"), "v1.2.tif");
  Answer(true);
  Delete("v1.2");
  EXPECT_EQ(tests::Names(Folder() + "/shot.v2_SM"), "");
}

struct Pair {
  const char* label;
  const char* first;
  const char* second;
  const char* file;  // of the first
};

class TwoNamesTest : public SideFolderTest, public testing::WithParamInterface<Pair> {};

TEST_P(TwoNamesTest, NeverShareAPreview) {
  EXPECT_TRUE(FirstKeepsItsFile(GetParam().first, GetParam().second, GetParam().file));
}

INSTANTIATE_TEST_SUITE_P(Names, TwoNamesTest,
                         testing::Values(Pair{"LeadingSeparator", "a", "/a", "a.tif"},
                                         Pair{"LeadingBackslash", "a", "\\a", "a.tif"},
                                         Pair{"DotFolder", "a", "./a", "a.tif"},
                                         Pair{"Case", "a", "A", "a.tif"},
                                         Pair{"TrailingBlank", "a", "a ", "a.tif"},
                                         Pair{"Suffix", "a", "a.tif", "a.tif"},
                                         Pair{"ParentFolder", "a", "x/../a", "a.tif"},
                                         Pair{"OutOfTheFolder", "a", "../shot_SM/a", "a.tif"}),
                         [](const auto& test) { return std::string(test.param.label); });

class BadNameTest : public SideFolderTest,
                    public testing::WithParamInterface<std::pair<const char*, std::string>> {};

// Recorded, renamed there and back, and deleted: whatever the name, files outside the side folder
// stay as they are.
TEST_P(BadNameTest, TouchesNothingOutsideTheSideFolder) {
  PretendSaved("shot.c4d");
  fs::create_directories(Side("a"));
  const std::string others[] = {Folder() + "/x.tif", Folder() + "/shot_SM.tif", Side("other.tif"),
                                Folder() + "/shot_SMx.tif"};
  for (const std::string& file : others) tests::WriteText(file, "kept");
  const std::string& name = GetParam().second;
  Record(name);
  Record("plain");
  Preview("plain.tif");
  Rename("plain", name + "2");
  Rename(name + "2", "plain");
  EXPECT_EQ(Element(1).GetString(kName), String("plain"));
  Answer(true);
  Delete(name);
  EXPECT_EQ(Rows(), "[ ] * plain\n");
  for (const std::string& file : others) EXPECT_EQ(tests::ReadText(file), "kept") << file;
  EXPECT_EQ(tests::Names(Folder()), "shot_SM shot_SM.tif shot_SMx.tif x.tif");
  EXPECT_EQ(tests::ReadText(Side("plain.tif")), "preview plain.tif");
}

INSTANTIATE_TEST_SUITE_P(
    Names, BadNameTest,
    testing::Values(
        std::pair{"Parent", std::string("../x")}, std::pair{"Grandparent", std::string("../../x")},
        std::pair{"Absolute", std::string("/nowhere/x")},
        std::pair{"Backslash", std::string("..\\x")}, std::pair{"Nul", std::string("x\0y", 3)},
        std::pair{"Newline", std::string("x\ny")}, std::pair{"Long", std::string(10000, 'n')},
        std::pair{"LeadingDot", std::string(".x")}, std::pair{"Dots", std::string("..")},
        std::pair{"TrailingBlank", std::string("x  ")},
        std::pair{"RightToLeft", std::string("\u05D0\u05D1\u202E")},
        std::pair{"NotUtf8", std::string("\xFF\xFE")}, std::pair{"SubFolder", std::string("a/x")}),
    [](const auto& test) { return std::string(test.param.first); });

}  // namespace
}  // namespace stagemarks
