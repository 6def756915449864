// Settings that the desktop keeps between runs: written whole or not at all, and never at the cost
// of those already there.
#include "program/desktop/Settings.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "tests/support/ScratchFolder.h"
#include "tests/support/ScriptedServices.h"

namespace {

using desktop::Settings;

struct SettingsTest : testing::Test {
  tests::ScratchFolder folder;
  tests::ScriptedServices services;
  std::string file = folder.Path() + "/config/desktop.json";

  std::string Text() { return services.files.ReadFile(file).Take(); }
  void Put(const std::string& text) {
    std::filesystem::create_directories(folder.Path() + "/config");
    std::ofstream(file) << text;
  }
};

TEST_F(SettingsTest, KeepsBytesAndTextsAndWhatAnotherDesktopKept) {
  Settings first(services.Get(), file);
  Settings second(services.Get(), file);
  const QByteArray bytes("\0\xff layout", 9);
  EXPECT_TRUE(first.Set("layout", bytes));
  EXPECT_TRUE(second.Set("recent", QStringList{"/a \"b\"", QString(QChar(0x05d0))}));
  const Settings later(services.Get(), file);
  EXPECT_EQ(later.Bytes("layout"), bytes);
  EXPECT_EQ(later.Texts("recent"), (QStringList{"/a \"b\"", QString(QChar(0x05d0))}));
  EXPECT_TRUE(later.Bytes("recent").isEmpty());
  EXPECT_TRUE(later.Texts("layout").isEmpty());
  EXPECT_EQ(services.ledger.WrittenSince(0).back(), file);
}

TEST_F(SettingsTest, DamagedFilesAreKeptAsideAndTheDefaultsApply) {
  for (const char* text : {"", "{\"layout\": \"QQ==\"", "[1]", "\xff\xfe",
                           "{\"layout\": 7, \"recent\": [1, null, \"/a\"]}"}) {
    Put(text);
    Settings settings(services.Get(), file);
    EXPECT_TRUE(settings.Bytes("layout").isEmpty()) << text;
    EXPECT_TRUE(settings.Set("layout", QByteArray("new")));
    EXPECT_EQ(Settings(services.Get(), file).Bytes("layout"), "new") << text;
  }
  EXPECT_EQ(Settings(services.Get(), file).Texts("recent"), QStringList{"/a"});
  EXPECT_EQ(services.files.ReadFile(file + ".damaged").Take(), "\xff\xfe");
}

TEST_F(SettingsTest, NothingIsLostWhereReadingOrWritingFails) {
  Put("{\"layout\": \"QQ==\"}");
  const std::string before = Text();
  tests::FaultyFileSystem& faulty = services.files;
  for (const auto operation : {engine::Operation::ReadFile, engine::Operation::ReplaceFile,
                               engine::Operation::MakeFolder}) {
    if (operation == engine::Operation::MakeFolder)
      std::filesystem::remove_all(folder.Path() + "/config");
    Settings settings(services.Get(), file);
    faulty.BreakFrom(1, operation);
    EXPECT_FALSE(settings.Set("recent", QStringList{"/a"}));
    EXPECT_EQ(settings.Texts("recent"), QStringList{"/a"}) << "it applies to this run";
    faulty.Mend();
    if (operation != engine::Operation::MakeFolder) {
      EXPECT_EQ(Text(), before);
    }
    EXPECT_TRUE(settings.Set("more", QStringList{"/b"}));
    EXPECT_EQ(Settings(services.Get(), file).Texts("recent"), QStringList{"/a"})
        << "kept with the next change";
    Put(before);
  }
}

TEST_F(SettingsTest, WithoutAPlaceTheyLastAsLongAsTheRun) {
  Settings settings(services.Get(), "");
  EXPECT_TRUE(settings.Set("recent", QStringList{"/a"}));
  EXPECT_EQ(settings.Texts("recent"), QStringList{"/a"});
  EXPECT_TRUE(services.ledger.FailuresSince(0).empty());
}

}  // namespace
