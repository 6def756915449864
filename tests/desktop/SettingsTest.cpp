// What the desktop keeps between runs: through the door to the files, whole or not at all, and
// never at the cost of what is there.
#include "program/desktop/Settings.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "engine/outside/FaultyOutside.h"
#include "engine/outside/RealOutside.h"
#include "tests/support/ScratchFolder.h"

namespace {

using desktop::Settings;

struct SettingsTest : testing::Test {
  tests::ScratchFolder folder;
  engine::RealOutside real;
  std::string file = folder.Path() + "/config/desktop.json";

  std::string Text() { return real.ReadFile(file).Take(); }
  void Put(const std::string& text) {
    std::filesystem::create_directories(folder.Path() + "/config");
    std::ofstream(file) << text;
  }
};

TEST_F(SettingsTest, KeepsBytesAndTextsAndWhatAnotherDesktopKept) {
  Settings first(real, file);
  Settings second(real, file);
  const QByteArray bytes("\0\xff layout", 9);
  EXPECT_TRUE(first.Set("layout", bytes));
  EXPECT_TRUE(second.Set("recent", QStringList{"/a \"b\"", QString(QChar(0x05d0))}));
  const Settings later(real, file);
  EXPECT_EQ(later.Bytes("layout"), bytes);
  EXPECT_EQ(later.Texts("recent"), (QStringList{"/a \"b\"", QString(QChar(0x05d0))}));
  EXPECT_TRUE(later.Bytes("recent").isEmpty());
  EXPECT_TRUE(later.Texts("layout").isEmpty());
  EXPECT_EQ(real.GetLedger().WrittenSince(0).back(), file);
}

TEST_F(SettingsTest, DamagedFilesAreKeptAsideAndTheDefaultsApply) {
  for (const char* text : {"", "{\"layout\": \"QQ==\"", "[1]", "\xff\xfe",
                           "{\"layout\": 7, \"recent\": [1, null, \"/a\"]}"}) {
    Put(text);
    Settings settings(real, file);
    EXPECT_TRUE(settings.Bytes("layout").isEmpty()) << text;
    EXPECT_TRUE(settings.Set("layout", QByteArray("new")));
    EXPECT_EQ(Settings(real, file).Bytes("layout"), "new") << text;
  }
  EXPECT_EQ(Settings(real, file).Texts("recent"), QStringList{"/a"});
  EXPECT_EQ(real.ReadFile(file + ".damaged").Take(), "\xff\xfe");
}

TEST_F(SettingsTest, NothingIsLostWhereReadingOrWritingFails) {
  Put("{\"layout\": \"QQ==\"}");
  const std::string before = Text();
  engine::FaultyOutside faulty(real);
  for (const auto operation : {engine::Operation::ReadFile, engine::Operation::ReplaceFile,
                               engine::Operation::MakeFolder}) {
    if (operation == engine::Operation::MakeFolder)
      std::filesystem::remove_all(folder.Path() + "/config");
    Settings settings(faulty, file);
    faulty.BreakFrom(1, operation);
    EXPECT_FALSE(settings.Set("recent", QStringList{"/a"}));
    EXPECT_EQ(settings.Texts("recent"), QStringList{"/a"}) << "it applies to this run";
    faulty.Mend();
    if (operation != engine::Operation::MakeFolder) {
      EXPECT_EQ(Text(), before);
    }
    EXPECT_TRUE(settings.Set("more", QStringList{"/b"}));
    EXPECT_EQ(Settings(real, file).Texts("recent"), QStringList{"/a"})
        << "kept with the next change";
    Put(before);
  }
}

TEST_F(SettingsTest, WithoutAPlaceTheyLastAsLongAsTheRun) {
  Settings settings(real, "");
  EXPECT_TRUE(settings.Set("recent", QStringList{"/a"}));
  EXPECT_EQ(settings.Texts("recent"), QStringList{"/a"});
  EXPECT_TRUE(real.GetLedger().FailuresSince(0).empty());
}

}  // namespace
