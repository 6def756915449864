// Files that the program makes beside a scene or in a chosen folder go through no symbolic link.
#include <filesystem>

#include "tests/commandline/CommandLine.h"

namespace {

namespace fs = std::filesystem;
using tests::ChildResult;
using tests::CommandLine;
using tests::ReadText;

constexpr const char* kRefusal = "is a symbolic link";

class LinksOnTheWay : public CommandLine {
 protected:
  // A script that fails and names a link.
  void Refused(const std::string& script) {
    const ChildResult result = Shell(script);
    EXPECT_EQ(result.status, 1) << script << "\n" << result.out << result.err;
    EXPECT_NE(result.err.find(kRefusal), std::string::npos) << script << "\n" << result.err;
  }
};

TEST_F(LinksOnTheWay, PreviewsGoThroughNone) {
  ASSERT_EQ(Shell("stagemarks new s.c4d; mkdir s_SM away; echo mine >away/x.tif; "
                  "ln -s ../away/x.tif s_SM/N.tif; ln -s ../away s_SM/link")
                .status,
            0);
  Refused("stagemarks record s.c4d N --preview --write");
  EXPECT_EQ(Marks(Scene("s.c4d")), "*N ") << "only the picture is missing";
  Refused(
      "stagemarks record s.c4d link/x --write -q; stagemarks delete s.c4d link/x --yes --write");
  Refused(
      "stagemarks record s.c4d M --write -q; touch away/M.tif; rm -r s_SM; ln -s away s_SM; "
      "stagemarks delete s.c4d M --yes --write");
  Refused("stagemarks record s.c4d x --write -q; stagemarks rename s.c4d x y --write");
  EXPECT_EQ(Marks(Scene("s.c4d")), "N *y ");
  EXPECT_EQ(tests::Names(Scene("away")), "M.tif x.tif");
  EXPECT_EQ(ReadText(Scene("away/x.tif")), "mine\n");
  // Reading and saving elsewhere lead anywhere; of a link to a folder the link goes.
  const ChildResult copied = Shell("stagemarks load s.c4d N -o t.c4d");
  EXPECT_EQ(copied.status, 0) << copied.err;
  EXPECT_EQ(tests::Names(Scene("t_SM")), "M.tif x.tif");
  EXPECT_EQ(Shell("stagemarks delete-all s.c4d --yes --write").status, 0);
  EXPECT_FALSE(fs::is_symlink(Scene("s_SM")));
  EXPECT_EQ(tests::Names(Scene("away")), "M.tif x.tif");
}

// Refused before anything is rendered or written.
TEST_F(LinksOnTheWay, ChosenFoldersAreFollowedAndWhatIsInThemIsNot) {
  Staged();
  ASSERT_EQ(Shell("stagemarks set spider.c4d --size 16x12 --write; mkdir real away; ln -s real "
                  "way; echo mine >away/x")
                .status,
            0);
  const struct {
    const char* link;  // in the chosen folder
    const char* call;
    const char* target = "../away/x";
  } kRows[] = {
      {"spider Day.c4d", "export spider.c4d --only Day --layout file --to way --force"},
      {"spider Day", "export spider.c4d --only Day --to way", "../away"},
      {"tex", "export spider.c4d --only Day --layout one-tex --to way", "../away"},
      {"spider Day.glb", "publish spider.c4d --only Day --to way --force"},
      {"page/index.html", "sheet spider.c4d --state Day --html way/page --force", "../../away/x"},
      {"page/pictures", "sheet spider.c4d --state Day --html way/page", "../../away"},
      {"Day.png", "render spider.c4d --state Day --size 8x6 -o way/Day.png --force"},
      {"Day", "render spider.c4d --state Day --size 8x6 -o 'way/{state}/{frame}.png'", "../away"},
      {"sheet.png", "sheet spider.c4d --state Day -o way/sheet.png --force"},
  };
  for (const auto& row : kRows) {
    const std::string link = std::string("real/") + row.link;
    fs::create_directories(fs::path(Scene(link)).parent_path());
    fs::create_symlink(row.target, Scene(link));
    Refused(std::string("stagemarks ") + row.call);
    EXPECT_EQ(tests::Names(Scene("away")), "x");
    EXPECT_TRUE(ReadText(Scene("away/x")) == "mine\n") << row.call;
    fs::remove(Scene(link));
    const ChildResult done = Shell(std::string("stagemarks ") + row.call);
    EXPECT_EQ(done.status, 0) << row.call << "\n" << done.err;
    fs::remove_all(Scene("real"));
    fs::create_directory(Scene("real"));
  }
  EXPECT_TRUE(fs::is_symlink(Scene("way")));
}

}  // namespace
