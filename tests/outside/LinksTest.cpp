// Links in the program's own part of a path: nothing is changed through one, whoever puts it there
// and whenever; and what cannot be looked at is not taken for missing.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <thread>

#include "engine/outside/AppendedFile.h"
#include "engine/outside/SystemServices.h"
#include "engine/outside/WorkClaim.h"
#include "host/Files.h"
#include "tests/support/ScratchFolder.h"
#include "tests/support/ScriptedServices.h"

namespace {

namespace fs = std::filesystem;
using engine::FileKind;
using engine::Status;
using tests::ReadText;
using tests::WriteText;

// A scene with its side folder, and a folder elsewhere that links lead to.
struct Links : testing::Test {
  Links() {
    for (const char* folder : {"project/s_SM", "elsewhere/sub"}) fs::create_directories(At(folder));
    for (const char* file :
         {"project/s.c4d", "project/s_SM/own.tif", "elsewhere/N.tif", "elsewhere/sub/N.tif"})
      WriteText(At(file), file);
    files.FollowScene(At("project/s.c4d"));
  }
  std::string At(const std::string& name) const { return scratch / name; }
  std::string Elsewhere() const {
    return tests::Names(At("elsewhere")) + ": " + ReadText(At("elsewhere/N.tif")) + ", " +
           tests::Names(At("elsewhere/sub")) + ": " + ReadText(At("elsewhere/sub/N.tif"));
  }
  void MakeSideFolderALink() {
    fs::rename(At("project/s_SM"), At("project/former"));
    fs::create_directory_symlink(At("elsewhere"), At("project/s_SM"));
  }

  tests::ScratchFolder scratch;
  tests::ScriptedServices services;
  engine::FileSystem& files = services.files;
};

TEST_F(Links, NothingIsChangedThroughOneInTheProgramsOwnPart) {
  MakeSideFolderALink();
  fs::create_directory_symlink(At("elsewhere"), At("project/former/link"));
  fs::create_symlink(At("elsewhere/N.tif"), At("project/former/N.tif"));
  const std::string side = At("project/s_SM");
  const std::string inside = At("project/former/link");
  const std::string before = Elsewhere();
  for (const std::string& link : {side, inside}) {
    const std::pair<const char*, std::function<Status()>> kRows[] = {
        {"write", [&] { return files.ReplaceFile(link + "/N.tif", "x"); }},
        {"write anew", [&] { return files.ReplaceFile(link + "/new.tif", "x"); }},
        {"write below", [&] { return files.ReplaceFile(link + "/sub/N.tif", "x"); }},
        {"copy", [&] { return files.CopyFile(At("project/s.c4d"), link + "/N.tif", true); }},
        {"make", [&] { return files.MakeFolder(link + "/folder"); }},
        {"remove", [&] { return files.RemoveFile(link + "/N.tif"); }},
        {"remove all", [&] { return files.RemoveFolder(link + "/sub"); }},
        {"rename", [&] { return files.Rename(link + "/N.tif", At("project/stolen")); }},
        {"rename into",
         [&] { return files.Rename(At("project/former/own.tif"), link + "/own.tif"); }},
        {"look", [&] { return files.CheckWay(link + "/N.tif"); }},
    };
    for (const auto& [what, work] : kRows) {
      const std::string message = work().Message();
      EXPECT_NE(message.find("\"" + link + "\" is a symbolic link"), std::string::npos)
          << what << ": " << message;
      EXPECT_NE(message.find("Take it away"), std::string::npos) << what;
    }
  }
  const std::string file = At("project/former/N.tif");
  EXPECT_FALSE(files.ReplaceFile(file, "x"));
  EXPECT_FALSE(files.CopyFile(At("project/s.c4d"), file, true));
  EXPECT_FALSE(files.CheckWay(file));
  EXPECT_EQ(Elsewhere(), before);
  EXPECT_EQ(tests::Names(At("project")), "former s.c4d s_SM");

  EXPECT_TRUE(files.ReadFile(side + "/N.tif")) << "reading leads anywhere";
  EXPECT_TRUE(files.RemoveFile(file)) << "a link itself may go";
  EXPECT_TRUE(files.RemoveFolder(side));
  EXPECT_EQ(Elsewhere(), before);
}

TEST_F(Links, WhatAPersonNamedIsFollowed) {
  fs::create_directory_symlink(At("project"), At("way"));
  fs::create_symlink(At("project/s.c4d"), At("way/link.c4d"));
  const std::string scene = At("way/link.c4d");
  EXPECT_FALSE(files.ReplaceFile(scene, "new")) << "nobody named it yet";
  EXPECT_TRUE(files.ReplaceFile(At("way/other"), "on the way")) << "all but the last name is";
  files.FollowScene(scene);
  EXPECT_TRUE(files.CheckWay(scene));
  EXPECT_TRUE(files.ReplaceFile(scene, "new"));
  EXPECT_EQ(ReadText(At("project/s.c4d")), "new");
  EXPECT_TRUE(fs::is_symlink(At("project/link.c4d")));
  EXPECT_TRUE(files.MakeFolder(At("way/link_SM")));
  EXPECT_TRUE(files.ReplaceFile(At("way/link_SM/a.tif"), "a"));
  EXPECT_TRUE(files.RemoveFile(At("way/link_SM/a.tif")));
  // A folder that was chosen, and a scene in a folder that is no way of another one.
  fs::create_directory_symlink(At("elsewhere"), At("project/out"));
  EXPECT_FALSE(files.ReplaceFile(At("project/out/sub/x"), "x"));
  files.Follow(At("project/out"));
  EXPECT_TRUE(files.ReplaceFile(At("project/out/sub/x"), "x"));
  fs::create_directory_symlink(At("elsewhere"), At("project/out/deep"));
  EXPECT_FALSE(files.ReplaceFile(At("project/out/deep/x"), "x"));
}

// Manifests and claims are no files that are replaced.
TEST_F(Links, ClaimsAndGrowingFilesGoThroughNone) {
  MakeSideFolderALink();
  fs::create_symlink(At("elsewhere/N.tif"), At("project/log"));
  fs::create_symlink(At("elsewhere/N.tif"), At("project/.N.claim"));
  const std::string before = Elsewhere();
  const std::pair<const char*, const char*> kRows[] = {{"project/s_SM/N", "project/s_SM"},
                                                       {"project/s_SM/sub/N", "project/s_SM"},
                                                       {"project/log", "project/log"},
                                                       {"project/N", "project/.N.claim"}};
  for (const auto& [path, link] : kRows) {
    const std::string refusal = "\"" + At(link) + "\" is a symbolic link";
    const auto file = engine::AppendedFile::Open(files, At(path));
    const auto claim = engine::WorkClaim::Try(files, At(path));
    const bool isClaimOnly = std::string(link).ends_with(".claim");
    const bool isFileOnly = std::string(link).ends_with("log");
    EXPECT_EQ(file.Message().find(refusal) != std::string::npos, !isClaimOnly) << file.Message();
    EXPECT_EQ(claim.Message().find(refusal) != std::string::npos, !isFileOnly) << claim.Message();
  }
  EXPECT_EQ(Elsewhere(), before);

  // Where it is what a person named, a link is a way like others.
  files.Follow(At("project/s_SM"));
  {
    auto file = engine::AppendedFile::Open(files, At("project/s_SM/lines"));
    ASSERT_TRUE(file && file.Value().Append("one") && file.Value().Append("two"));
    const auto claim = engine::WorkClaim::Try(files, At("project/s_SM/N.tif"));
    ASSERT_TRUE(claim && claim.Value());
    EXPECT_TRUE(engine::WorkClaim::IsTaken(At("elsewhere/N.tif")));
    const auto second = engine::WorkClaim::Try(files, At("elsewhere/N.tif"));
    EXPECT_TRUE(second && !second.Value());
  }
  EXPECT_EQ(tests::Names(At("elsewhere")), "N.tif lines sub") << "a claim that ended is gone";
  EXPECT_EQ(ReadText(At("elsewhere/lines")), "one\ntwo\n");
}

// Somebody swaps a folder of ours for a link as fast as he can.
TEST_F(Links, SwappingAFolderOnTheWayDoesNotHelp) {
  fs::create_directory_symlink(At("elsewhere"), At("project/swapped"));
  const std::string before = Elsewhere();
  std::atomic<bool> isOver{false};
  std::atomic<int> swaps{0};
  std::thread other([&] {
    const std::string one = At("project/s_SM");
    const std::string two = At("project/swapped");
    while (!isOver) {
      if (renameat2(AT_FDCWD, one.c_str(), AT_FDCWD, two.c_str(), RENAME_EXCHANGE) == 0) ++swaps;
    }
  });
  int done = 0;
  int refused = 0;
  for (int round = 0; round < 2000 || swaps < 2000; ++round) {
    for (const Status& status :
         {files.ReplaceFile(At("project/s_SM/N.tif"), "x"),
          files.RemoveFile(At("project/s_SM/N.tif")), files.MakeFolder(At("project/s_SM/sub/f")),
          files.RemoveFolder(At("project/s_SM/sub")),
          files.Rename(At("project/s_SM/N.tif"), At("project/s_SM/M.tif"))})
      ++(status ? done : refused);
  }
  isOver = true;
  other.join();
  EXPECT_EQ(Elsewhere(), before);
  EXPECT_GT(done, 0);
  EXPECT_GT(refused, 0);
}

TEST_F(Links, WhatCannotBeLookedAtIsNotMissing) {
  const std::string side = At("project/s_SM");
  services.files.HideFromView(side);
  EXPECT_EQ(files.Kind(side + "/own.tif"), FileKind::Unknown);
  const engine::PublishedServicesScope published(services.Get());
  const std::size_t mark = services.ledger.Mark();
  EXPECT_FALSE(host::GeFExist(host::Filename((side + "/own.tif").c_str()), false));
  ASSERT_EQ(services.ledger.FailuresSince(mark).size(), 1U);
  EXPECT_EQ(services.ledger.FailuresSince(mark)[0].message,
            "Cannot look at \"" + side + "/own.tif\": Input/output error.");
  EXPECT_FALSE(files.RemoveFile(side + "/gone.tif"));
  EXPECT_EQ(services.ledger.FailuresSince(mark).size(), 2U) << "it may be there";
  services.files.HideFromView("");
  EXPECT_FALSE(files.RemoveFile(side + "/gone.tif"));
  EXPECT_EQ(services.ledger.FailuresSince(mark).size(), 2U) << "there is nothing to remove";

  fs::create_symlink("loop", At("loop"));
  const struct {
    std::string path;
    FileKind kind;
  } kRows[] = {{At("loop"), FileKind::Unknown},
               {At("loop/x"), FileKind::Unknown},
               {At(std::string(300, 'n')), FileKind::Missing},
               {scratch.Path() +
                    [] {
                      std::string path;
                      for (int i = 0; i < 40; ++i) path += "/" + std::string(200, 'n');
                      return path;
                    }(),
                FileKind::Unknown},
               {At("project/s.c4d/x"), FileKind::Missing}};
  for (const auto& row : kRows) EXPECT_EQ(files.Kind(row.path), row.kind) << row.path.substr(0, 99);
}

}  // namespace
