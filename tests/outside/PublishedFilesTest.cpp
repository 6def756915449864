#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <future>

#include "engine/outside/SystemServices.h"
#include "engine/outside/Viewer.h"
#include "host/Application.h"
#include "host/Files.h"
#include "tests/support/ScratchFolder.h"
#include "tests/support/ScriptedServices.h"

namespace {

namespace fs = std::filesystem;
using host::Filename;
using host::String;

struct PublishedFiles : testing::Test {
  Filename At(const std::string& name) const { return Filename((scratch / name).c_str()); }

  tests::ScratchFolder scratch;
  tests::ScriptedServices services;
  engine::PublishedServicesScope published{services.Get()};
};

TEST_F(PublishedFiles, ExistTellsFilesFromFolders) {
  tests::WriteText(scratch / "file", "x");
  EXPECT_TRUE(host::GeFExist(At("file"), false));
  EXPECT_FALSE(host::GeFExist(At("file"), true));
  EXPECT_TRUE(host::GeFExist(At(""), true));
  EXPECT_FALSE(host::GeFExist(At(""), false));
  EXPECT_FALSE(host::GeFExist("file", false));
  EXPECT_FALSE(host::GeFExist("", true));
  EXPECT_FALSE(host::GeFExist("/dev/null", false));
}

TEST_F(PublishedFiles, CopyReplacesWithFlagOneOnly) {
  tests::WriteText(scratch / "a", "a");
  tests::WriteText(scratch / "b", "b");
  EXPECT_FALSE(host::GeFCopyFile(At("a"), At("b"), 0));
  EXPECT_TRUE(host::GeFCopyFile(At("a"), At("b"), 1));
  EXPECT_TRUE(host::GeFCopyFile(At("a"), At("a"), 1));
  EXPECT_EQ(tests::ReadText(scratch / "b"), "a");
}

TEST_F(PublishedFiles, KillTakesFilesOrWithFlagOneFolders) {
  fs::create_directories(scratch / "folder/sub");
  tests::WriteText(scratch / "file", "x");
  EXPECT_FALSE(host::GeFKill(At("folder"), 0));
  EXPECT_FALSE(host::GeFKill(At("file"), 1));
  EXPECT_FALSE(host::GeFKill(At("missing"), 0));
  EXPECT_FALSE(host::GeFKill(At("missing"), 1));
  EXPECT_FALSE(host::GeFKill(At("folder/../file"), 0));
  EXPECT_EQ(tests::Names(scratch.Path()), "file folder");
  EXPECT_TRUE(host::GeFKill(At("folder"), 1));
  EXPECT_TRUE(host::GeFKill(At("file"), 0));
  EXPECT_EQ(tests::Names(scratch.Path()), "");
}

TEST_F(PublishedFiles, FoldersAndNames) {
  EXPECT_TRUE(host::GeFCreateDir(At("a")));
  EXPECT_TRUE(host::GeFCreateDir(At("a")));
  EXPECT_FALSE(host::GeFCreateDir(At("b/c")));
  EXPECT_FALSE(host::GeFRename(At("a"), At("a")));
  EXPECT_TRUE(host::GeFRename(At("a"), At("z")));
  EXPECT_EQ(tests::Names(scratch.Path()), "z");
}

TEST_F(PublishedFiles, BrowsingListsPlainFilesInNameOrder) {
  for (const char* name : {"b.tif", "a.tif", "B.tif"}) tests::WriteText(scratch / name, "x");
  fs::create_directory(scratch / "folder");
  host::AutoAlloc<host::BrowseFiles> browser;
  for (int turn = 0; turn < 2; ++turn) {
    browser->Init(At(""), 0);
    EXPECT_FALSE(browser->GetFilename().Content());
    std::string names;
    while (browser->GetNext()) names += browser->GetFilename().GetString().ToUtf8() + " ";
    EXPECT_EQ(names, "B.tif a.tif b.tif ");
    EXPECT_FALSE(browser->GetNext());
    EXPECT_FALSE(browser->GetFilename().Content());
  }
  browser->Init("relative", 0);
  EXPECT_FALSE(browser->GetNext());
}

TEST_F(PublishedFiles, ChoosingAFileKeepsTheNameWhenCanceled) {
  Filename name("/proposal");
  EXPECT_FALSE(
      host::FileSelect(name, host::FILESELECTTYPE_ANYTHING, host::FILESELECT_DIRECTORY, "Choose"));
  EXPECT_EQ(name.GetString(), String("/proposal"));
  services.person.ChooseNext("/chosen");
  EXPECT_TRUE(
      host::FileSelect(name, host::FILESELECTTYPE_ANYTHING, host::FILESELECT_DIRECTORY, "Choose"));
  EXPECT_EQ(name.GetString(), String("/chosen"));
}

TEST_F(PublishedFiles, PromptsStatusViewerAndClockGoToTheServices) {
  services.person.AnswerNext(true);
  services.clock.now = host::LocalFileTime{2011, 2, 3, 4, 5, 6};
  host::MessageDialog("Told");
  EXPECT_TRUE(host::QuestionDialog("Asked?"));
  host::StatusSetText("Busy");
  host::StatusClear();
  EXPECT_FALSE(host::GeExecuteFile(At("manual.pdf")));
  tests::WriteText(scratch / "manual.pdf", "x");
  EXPECT_TRUE(host::GeExecuteFile(At("manual.pdf")));
  EXPECT_EQ(services.person.TakeTranscript(),
            "tell: Told\nask: Asked? -> yes\nstatus: Busy\nstatus cleared\nview: " +
                (scratch / "manual.pdf") + "\n");
  host::LocalFileTime time;
  host::GeGetCurrentTime(time);
  EXPECT_EQ(time.year * 10000 + time.month * 100 + time.day, 20110203);
  EXPECT_EQ(time.hour * 10000 + time.minute * 100 + time.second, 40506);
}

TEST_F(PublishedFiles, TheSystemsClockIsThatOfTheSystem) {
  const std::time_t before = std::time(nullptr);
  const host::LocalFileTime now = engine::SystemClock().Now();
  std::tm local{};
  local.tm_year = now.year - 1900;
  local.tm_mon = now.month - 1;
  local.tm_mday = now.day;
  local.tm_hour = now.hour;
  local.tm_min = now.minute;
  local.tm_sec = now.second;
  local.tm_isdst = -1;
  const std::time_t told = std::mktime(&local);
  constexpr std::time_t kHour = 3600;  // which comes twice where clocks are put back
  EXPECT_TRUE(told >= before - kHour && told <= std::time(nullptr) + kHour) << told - before;
}

// The system's own program for opening files is one of the test's, which fails.
TEST_F(PublishedFiles, AViewerThatFailsIsHeardOf) {
  const std::string program = scratch / "xdg-open";
  tests::WriteText(program, "#!/bin/sh\nexit 3\n");
  fs::permissions(program, fs::perms::owner_all);
  tests::WriteText(scratch / "a.pdf", "x");
  const std::string path = std::getenv("PATH");
  ::setenv("PATH", (scratch.Path() + ":" + path).c_str(), 1);
  std::promise<std::string> failed;
  engine::ListenForFailedViewers([&failed](const std::string& file) { failed.set_value(file); });
  engine::SystemViewer viewer(services.files, services.ledger);
  EXPECT_TRUE(viewer.Open(scratch / "a.pdf"));
  std::future<std::string> heard = failed.get_future();
  const bool came = heard.wait_for(std::chrono::minutes(1)) == std::future_status::ready;
  engine::ListenForFailedViewers({});
  ::setenv("PATH", path.c_str(), 1);
  ASSERT_TRUE(came);
  EXPECT_EQ(heard.get(), scratch / "a.pdf");
}

}  // namespace
