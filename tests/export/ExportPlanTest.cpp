// The plan of an export before it writes: files by layout, room by the files already there, and
// what stands in the way.
#include <gtest/gtest.h>

#include <filesystem>

#include "program/export/ExportPlan.h"
#include "tests/support/SceneBuilder.h"
#include "tests/support/ScratchFolder.h"
#include "tests/support/ScriptedServices.h"

namespace {

namespace fs = std::filesystem;
using exporting::ExportPlan;
using exporting::Layout;

constexpr std::uint64_t kBlock = 4096;
constexpr std::uint64_t kTexture = 100 * kBlock;

class Plans : public testing::Test {
 protected:
  Plans() {
    services_.files.SetSpace(1000 * kBlock);
    fs::create_directory(Work());
    tests::WriteText(Work("wood.png"), std::string(kTexture, 'w'));
    scene_.Doc().SetDocumentPath(Work().c_str());
    scene_.Doc().SetDocumentName("Shot.c4d");
    scene_.Material("Wall").Material("Floor");
    scene_.Bitmap(scene_.GetMaterial("Wall"), Work("wood.png"));
    scene_.Bitmap(scene_.GetMaterial("Floor"), Work("wood.png"));
  }

  std::string Work(const std::string& file = "") const {
    return scratch_ / ("work" + (file.empty() ? "" : "/" + file));
  }
  std::string Out(const std::string& file = "") const {
    return scratch_ / ("out" + (file.empty() ? "" : "/" + file));
  }
  ExportPlan Plan(Layout layout, std::vector<std::string> names = {"A", "B", "C"}) {
    return exporting::PlanExport(services_.files, scene_.Doc(), {layout, Out(), std::move(names)});
  }
  void Cache(const std::string& file, host::LONG own) {
    scene_.Settings("GI").Post("GI", host::VPglobalillumination).Active("GI");
    host::BaseVideoPost* post = scene_.GetSettings("GI")->GetFirstVideoPost();
    host::BaseContainer data = post->GetData();
    data.SetLong(host::GI_USE_CACHE_FILE, 1);
    data.SetLong(host::GI_OWN_CACHE_FILE, own);
    data.SetFilename(host::GI_CACHE_FILENAME, host::Filename(file.c_str()));
    post->SetData(data);
  }

  tests::ScratchFolder scratch_;
  tests::ScriptedServices services_;
  tests::SceneBuilder scene_;
};

TEST_F(Plans, CountWhatEachLayoutWrites) {
  const std::uint64_t scene = Plan(Layout::Files, {"A"}).bytes;
  EXPECT_GE(scene, kBlock);
  const struct {
    Layout layout;
    std::size_t textures;
    const char* summary;
  } kRows[] = {{Layout::Files, 0, "3 scene files, about 12 kB"},
               {Layout::Folders, 0, "3 scene files, about 12 kB"},
               {Layout::Project, 3, "3 scene files and 3 textures, about 1.2 MB"},
               {Layout::OneTextureFolder, 1, "3 scene files and 1 texture, about 422 kB"}};
  for (const auto& row : kRows) {
    const ExportPlan plan = Plan(row.layout);
    EXPECT_EQ(plan.textures, row.textures) << row.summary;
    EXPECT_EQ(plan.bytes, 3 * scene + row.textures * kTexture) << row.summary;
    EXPECT_EQ(exporting::Summary(plan), row.summary);
    EXPECT_TRUE(plan.obstacles.empty() && plan.missing.empty());
  }
  EXPECT_FALSE(fs::exists(Out())) << "nothing is written";
}

// A file is written beside the old one, which goes then: the room of one more file is enough to
// write all anew.
TEST_F(Plans, WhatIsReplacedMakesRoom) {
  const ExportPlan fresh = Plan(Layout::Project);
  EXPECT_TRUE(exporting::Fits(fresh));
  services_.files.SetSpace(fresh.bytes - 1);
  EXPECT_FALSE(exporting::Fits(Plan(Layout::Project)));
  for (const char* name : {"A", "B", "C"}) {
    const std::string folder = Out("Shot " + std::string(name));
    fs::create_directories(folder + "/tex");
    tests::WriteText(folder + "/tex/wood.png", std::string(kTexture, 'o'));
    tests::WriteText(folder + "/Shot " + name + ".c4d", "old");
  }
  EXPECT_EQ(Plan(Layout::Project).bytes, kTexture);
  services_.files.SetSpace(kTexture - 1);
  EXPECT_FALSE(exporting::Fits(Plan(Layout::Project)));
}

TEST_F(Plans, CachesGoWithEveryScene) {
  fs::create_directory(Work("illum"));
  tests::WriteText(Work("illum/Shot.gi"), std::string(2 * kBlock, 'i'));
  tests::WriteText(Work("own.gi"), std::string(5 * kBlock, 'i'));
  const std::uint64_t scenes = Plan(Layout::Files).bytes;
  Cache("", 0);
  EXPECT_EQ(exporting::Summary(Plan(Layout::Files)).substr(0, 26), "3 scene files and 3 caches");
  EXPECT_EQ(Plan(Layout::Files).bytes, scenes + 3 * 2 * kBlock);
  Cache(Work("own.gi"), 1);
  EXPECT_EQ(Plan(Layout::Folders).bytes, scenes + 3 * 5 * kBlock);
  Cache(Work("nowhere.gi"), 1);
  EXPECT_EQ(Plan(Layout::Folders).caches, 0U);
}

// A texture counts as missing where the gathering does not look, although a picture may show it.
TEST_F(Plans, NameTexturesThatAreNotGathered) {
  for (const char* file : {"wood.png", "/nowhere/wood.png", "tile.png"})
    scene_.Bitmap(scene_.GetMaterial("Wall"), file);
  fs::create_directory(Work("tex"));
  tests::WriteText(Work("tex/tile.png"), "t");
  EXPECT_EQ(Plan(Layout::OneTextureFolder).missing,
            (std::vector<std::string>{"wood.png", "/nowhere/wood.png"}));
  EXPECT_EQ(Plan(Layout::OneTextureFolder).textures, 2U);
  EXPECT_TRUE(Plan(Layout::Files).missing.empty());
}

TEST_F(Plans, NameWhatCannotBeWritten) {
  fs::create_directories(Out("Shot A.c4d"));
  tests::WriteText(Out("Shot A"), "a file");
  tests::WriteText(Out("tex"), "a file");
  const std::string folderThere =
      "Cannot write \"" + Out("Shot A.c4d") + "\": a folder is in its place.";
  const std::string fileThere =
      "Cannot make the folder \"" + Out("Shot A") + "\": a file is in its place.";
  const std::string texThere =
      "Cannot make the folder \"" + Out("tex") + "\": a file is in its place.";
  const struct {
    Layout layout;
    std::string name;
    std::vector<std::string> obstacles;
  } kRows[] = {
      {Layout::Files, "A", {folderThere}},
      {Layout::Folders, "A", {fileThere}},
      {Layout::OneTextureFolder, "B", {texThere}},
      {Layout::Files, "a/b", {"The name \"a/b\" cannot be that of a file: it holds a slash."}},
      {Layout::Folders,
       "../up",
       {"The name \"../up\" cannot be that of a file: it holds a slash."}},
      {Layout::Project,
       std::string(260, 'x'),
       {"The name \"" + std::string(79, 'x') +
        "\u2026\" cannot be that of a file: it is too long."}},
      {Layout::Files, "..", {}},
      {Layout::Files, "new\nline \\ * ?", {}},
      {Layout::Files, std::string(255 - 9, 'x'), {}},
      {Layout::Files,
       std::string(256 - 9, 'x'),
       {"The name \"" + std::string(79, 'x') +
        "\u2026\" cannot be that of a file: it is too long."}},
  };
  for (const auto& row : kRows)
    EXPECT_EQ(Plan(row.layout, {row.name}).obstacles, row.obstacles) << row.name;
  EXPECT_EQ(Plan(Layout::Files, {"good", "a/b", "c/d"}).obstacles.size(), 2U);
}

TEST(Bytes, AreReadable) {
  const std::pair<std::uint64_t, const char*> kRows[] = {{0, "0 bytes"},
                                                         {999, "999 bytes"},
                                                         {1000, "1.0 kB"},
                                                         {12345, "12 kB"},
                                                         {999'950, "1.0 MB"},
                                                         {999'400, "999 kB"},
                                                         {1'234'567'890, "1.2 GB"},
                                                         {~std::uint64_t{0}, "18 EB"},
                                                         {9'949'000, "9.9 MB"},
                                                         {9'950'000, "10 MB"}};
  for (const auto& [bytes, text] : kRows) EXPECT_EQ(exporting::BytesText(bytes), text) << bytes;
}

TEST(Layouts, AreThoseOfTheDialog) {
  for (const Layout layout :
       {Layout::Files, Layout::Folders, Layout::Project, Layout::OneTextureFolder}) {
    EXPECT_EQ(exporting::LayoutOfEntry(exporting::EntryOf(layout)), layout);
  }
  EXPECT_FALSE(exporting::LayoutOfEntry("As Something"));
}

}  // namespace
