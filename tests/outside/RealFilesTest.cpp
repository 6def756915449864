#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <span>

#include "engine/outside/AppendedFile.h"
#include "engine/outside/FileLock.h"
#include "engine/outside/FileParts.h"
#include "engine/outside/SystemServices.h"
#include "tests/support/ScratchFolder.h"

namespace {

namespace fs = std::filesystem;
using engine::FileKind;
using engine::Status;
using tests::Names;
using tests::ReadText;
using tests::WriteText;

// While it lives this process has no more than `most` of a resource.
class Limit {
 public:
  Limit(__rlimit_resource resource, rlim_t most) : resource_(resource) {
    getrlimit(resource_, &former_);
    const rlimit small{most, former_.rlim_max};
    setrlimit(resource_, &small);
  }
  ~Limit() { setrlimit(resource_, &former_); }

 private:
  __rlimit_resource resource_;
  rlimit former_{};
};

// While it lives no file of this process grows beyond `bytes`: writing is cut short, as on a full
// disk.
class FullDisk {
 public:
  explicit FullDisk(rlim_t bytes)
      : handler_(std::signal(SIGXFSZ, SIG_IGN)), limit_(RLIMIT_FSIZE, bytes) {}
  ~FullDisk() { std::signal(SIGXFSZ, handler_); }

 private:
  void (*handler_)(int);
  Limit limit_;
};

// While it lives the superuser has the rights of an ordinary user, who owns `folder` and what is in
// it.
class Ordinary {
 public:
  explicit Ordinary(const std::string& folder) : superuser_(geteuid() == 0) {
    if (!superuser_) return;
    constexpr uid_t kNobody = 65534;
    for (const auto& entry : fs::directory_iterator(folder))
      owned_ &= chown(entry.path().c_str(), kNobody, kNobody) == 0;
    owned_ &= chown(folder.c_str(), kNobody, kNobody) == 0 && seteuid(kNobody) == 0;
    EXPECT_TRUE(owned_);
  }
  ~Ordinary() {
    if (superuser_ && seteuid(0) != 0) std::abort();
  }

 private:
  bool superuser_;
  bool owned_ = true;
};

struct RealFiles : testing::Test {
  std::string At(const std::string& name) const { return scratch / name; }
  std::string Here() const { return Names(scratch.Path()); }

  tests::ScratchFolder scratch;
  engine::SystemServices services;
  engine::FileSystem& files = services.Get().files;
};

TEST_F(RealFiles, ReplaceWritesAllPiecesAndLeavesNothingElse) {
  const std::string_view pieces[] = {"one ", "", std::string_view("t\0o", 3)};
  ASSERT_TRUE(files.ReplaceFile(At("a"), pieces));
  EXPECT_EQ(ReadText(At("a")), std::string("one t\0o", 7));
  ASSERT_TRUE(files.ReplaceFile(At("a"), "shorter"));
  EXPECT_EQ(ReadText(At("a")), "shorter");
  EXPECT_EQ(Here(), "a");
}

TEST_F(RealFiles, ReplaceWritesNamesOfEveryAllowedLength) {
  const std::string longest(255, 'n');
  EXPECT_TRUE(files.ReplaceFile(At(longest), "x"));
  EXPECT_FALSE(files.ReplaceFile(At(longest + "n"), "x"));
  EXPECT_EQ(Here(), longest);
}

TEST_F(RealFiles, AFullDiskLeavesTheOldFileWholeAndNoRest) {
  WriteText(At("scene"), "the old scene");
  WriteText(At("big"), std::string(5000, 'b'));
  const std::string bytes(100000, 'x');
  {
    const FullDisk full(4096);
    const Status replaced = files.ReplaceFile(At("scene"), bytes);
    EXPECT_EQ(replaced.Message(), "Cannot write \"" + At("scene") + "\": File too large.");
    EXPECT_FALSE(files.ReplaceFile(At("new"), bytes));
    EXPECT_FALSE(files.CopyFile(At("big"), At("scene"), true));
  }
  EXPECT_EQ(ReadText(At("scene")), "the old scene");
  EXPECT_EQ(Here(), "big scene");
  EXPECT_EQ(services.Get().ledger.FailuresSince(0).size(), 3U);
}

// The device is one of our own, which the superuser alone can make: were it the system's, a fault
// here would put a file in its place.
TEST_F(RealFiles, ReplaceRefusesWhatIsNoFileInItsPlace) {
  fs::create_directory(At("folder"));
  mkfifo(At("pipe").c_str(), 0600);
  mknod(At("device").c_str(), S_IFCHR | 0600, makedev(1, 3));
  const std::string before = Here();
  fs::create_symlink(At("nowhere"), At("dangling"));
  files.Follow(At("dangling"));
  EXPECT_EQ(files.ReplaceFile(At("folder"), "x").Message(),
            "Cannot write \"" + At("folder") + "\": a folder is in its place.");
  EXPECT_FALSE(files.ReplaceFile(At("pipe"), "x"));
  EXPECT_FALSE(files.ReplaceFile(At("dangling"), "x"));
  EXPECT_FALSE(files.ReplaceFile(At("missing/x"), "x"));
  if (fs::exists(At("device"))) {
    EXPECT_FALSE(files.ReplaceFile(At("device"), "x"));
    EXPECT_TRUE(fs::is_character_file(At("device")));
  }
  fs::remove(At("dangling"));
  EXPECT_EQ(Here(), before);
}

TEST_F(RealFiles, ReplaceKeepsALinkAndTheRightsOfTheFile) {
  fs::create_directory(At("store"));
  WriteText(At("store/scene"), "old");
  fs::permissions(At("store/scene"),
                  fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
  fs::create_symlink("store/scene", At("scene"));
  files.Follow(At("scene"));
  ASSERT_TRUE(files.ReplaceFile(At("scene"), "new"));
  EXPECT_TRUE(fs::is_symlink(At("scene")));
  EXPECT_EQ(ReadText(At("store/scene")), "new");
  EXPECT_EQ(static_cast<int>(fs::status(At("store/scene")).permissions()), 0640);
  fs::permissions(At("store/scene"), fs::perms(02751));
  ASSERT_TRUE(files.ReplaceFile(At("scene"), "newer"));
  EXPECT_EQ(static_cast<int>(fs::status(At("store/scene")).permissions()), 02751);
}

TEST_F(RealFiles, WriteProtectionIsRespected) {
  WriteText(At("a"), "old");
  fs::permissions(At("a"), fs::perms::owner_read);
  const Ordinary ordinary(scratch.Path());
  EXPECT_EQ(files.ReplaceFile(At("a"), "new").Message(),
            "Cannot write \"" + At("a") + "\": Permission denied.");
  fs::permissions(scratch.Path(), fs::perms::owner_read | fs::perms::owner_exec);
  EXPECT_FALSE(files.ReplaceFile(At("b"), "new"));
  EXPECT_FALSE(files.CopyFile(At("a"), At("b"), true));
  EXPECT_FALSE(files.RemoveFile(At("a")));
  EXPECT_FALSE(files.RemoveFolder(scratch.Path()));
  fs::permissions(scratch.Path(), fs::perms::owner_all);
  EXPECT_EQ(ReadText(At("a")), "old");
  EXPECT_EQ(Here(), "a");
}

TEST_F(RealFiles, ReadKnowsItsLimitAndTakesFilesWithoutASize) {
  WriteText(At("a"), "12345");
  EXPECT_EQ(files.ReadFile(At("a"), 5).Value(), "12345");
  EXPECT_EQ(files.ReadFile(At("a"), 4).Message(),
            "Cannot read \"" + At("a") + "\": it is larger than 4 bytes.");
  EXPECT_NE(files.ReadFile("/proc/self/status").Value().find("Name:"), std::string::npos);
  EXPECT_EQ(files.ReadFile("/proc/self/maps", 10).Ok(), false);
}

TEST_F(RealFiles, PipesAndDevicesNeverHang) {
  mkfifo(At("pipe").c_str(), 0600);
  fs::create_symlink(At("pipe"), At("link"));
  for (const std::string& path :
       {At("pipe"), At("link"), std::string("/dev/zero"), std::string("/dev/tty")}) {
    EXPECT_EQ(files.Kind(path), FileKind::Other) << path;
    EXPECT_FALSE(files.ReadFile(path)) << path;
    EXPECT_FALSE(files.CopyFile(path, At("copy"), true)) << path;
    EXPECT_FALSE(files.ListFiles(path)) << path;
  }
  EXPECT_FALSE(files.RemoveFile(At("pipe")));
  EXPECT_EQ(Here(), "link pipe");
}

TEST_F(RealFiles, AStampTellsOneStateOfAFileFromOthers) {
  WriteText(At("a"), "12345");
  const timespec times[] = {{5, 6}, {1234567890, 123456789}};
  ASSERT_EQ(utimensat(AT_FDCWD, At("a").c_str(), times, 0), 0);
  struct stat info;
  ASSERT_EQ(stat(At("a").c_str(), &info), 0);
  const engine::FileStamp stamp = files.Stamp(At("a"));
  EXPECT_EQ(stamp.size, 5U);
  EXPECT_EQ(stamp.changed, 1234567890123456789);
  EXPECT_EQ(stamp.touched / 1000000000, info.st_ctim.tv_sec);
  EXPECT_EQ(stamp.touched % 1000000000, info.st_ctim.tv_nsec);
  EXPECT_EQ(stamp.device, info.st_dev);
  EXPECT_EQ(stamp.number, info.st_ino);
  for (const char* none : {"missing", "a/b"}) EXPECT_EQ(files.Stamp(At(none)).number, 0U);
}

TEST_F(RealFiles, SpaceIsThatOfTheDiskWhereAFileWouldBe) {
  const auto here = files.Space(scratch.Path());
  const auto below = files.Space(At("not/yet/there"));
  ASSERT_TRUE(here && below);
  const auto all = fs::space(scratch.Path());
  EXPECT_GE(here->block, 512U);
  EXPECT_EQ(below->block, here->block);
  for (const auto& space : {*here, *below}) {
    EXPECT_GT(space.free, all.available / 4) << "others write meanwhile";
    EXPECT_LE(space.free, all.capacity);
  }
  EXPECT_FALSE(files.Space("/proc/self")) << "no disk";
  EXPECT_FALSE(files.Space("relative"));
}

TEST_F(RealFiles, PartsOfAFileEndWithIt) {
  using engine::FileParts;
  EXPECT_FALSE(FileParts::Open(At("missing")));
  WriteText(At("a"), "0123456789");
  const auto parts = FileParts::Open(At("a"));
  ASSERT_TRUE(parts);
  const struct {
    std::uint64_t offset;
    std::uint64_t length;
    const char* bytes;  // null: there are not as many
  } rows[] = {{0, 10, "0123456789"}, {3, 4, "3456"},   {9, 1, "9"},      {10, 0, ""},
              {10, 1, nullptr},      {0, 11, nullptr}, {11, 0, nullptr}, {5, UINT64_MAX, nullptr}};
  for (const auto& row : rows) {
    const auto read = parts.Value().Read(row.offset, row.length);
    EXPECT_EQ(read.Message(), row.bytes ? "" : "The file is shorter than that.")
        << row.offset << " " << row.length;
    EXPECT_EQ(read ? read.Value() : "", row.bytes ? row.bytes : "");
  }
  WriteText(At("a"), "01234");
  EXPECT_EQ(parts.Value().Read(3, 4).Message(), "The file became shorter.");
}

TEST_F(RealFiles, LinesAreAppendedWholeOrNotAtAll) {
  const auto append = [&](const char* name, std::string_view line) {
    auto file = engine::AppendedFile::Open(files, At(name));
    return file ? file.Value().Append(line) : file.GetStatus();
  };
  EXPECT_TRUE(append("new", "one") && append("new", "two"));
  EXPECT_EQ(ReadText(At("new")), "one\ntwo\n");
  WriteText(At("cut"), "a line that was cut");
  EXPECT_TRUE(append("cut", "next"));
  EXPECT_EQ(ReadText(At("cut")), "a line that was cut\nnext\n");
  {
    const FullDisk full(12);
    EXPECT_EQ(append("new", "three and more").Message(),
              "Cannot write \"" + At("new") + "\": No space left on device.");
  }
  EXPECT_EQ(ReadText(At("new")), "one\ntwo\n");
  fs::create_directory(At("folder"));
  EXPECT_FALSE(append("folder", "x"));
  EXPECT_FALSE(append("../x", "x"));
}

TEST_F(RealFiles, CopyTakesTheContentAndReplacesOnlyWhenToldTo) {
  std::string large;
  for (int i = 0; i < 120000; ++i) large += std::to_string(i);
  WriteText(At("a"), large);
  EXPECT_TRUE(files.CopyFile(At("a"), At("b"), false));
  EXPECT_TRUE(ReadText(At("b")) == large);
  fs::remove(At("b"));
  WriteText(At("a"), "content");
  EXPECT_TRUE(files.CopyFile(At("a"), At("b"), false));
  WriteText(At("b"), "other");
  EXPECT_FALSE(files.CopyFile(At("a"), At("b"), false));
  EXPECT_EQ(ReadText(At("b")), "other");
  EXPECT_TRUE(files.CopyFile(At("a"), At("b"), true));
  EXPECT_EQ(ReadText(At("b")), "content");
  EXPECT_EQ(Here(), "a b");
}

TEST_F(RealFiles, CopyingOntoItselfLeavesTheFileAlone) {
  WriteText(At("a"), "content");
  fs::create_hard_link(At("a"), At("hard"));
  fs::create_symlink(At("a"), At("soft"));
  const auto before = fs::last_write_time(At("a"));
  for (const char* name : {"a", "hard", "soft"}) {
    EXPECT_TRUE(files.CopyFile(At("a"), At(name), true)) << name;
    EXPECT_TRUE(files.CopyFile(At(name), At("a"), true)) << name;
  }
  EXPECT_EQ(ReadText(At("a")), "content");
  EXPECT_EQ(fs::hard_link_count(At("a")), 2U);
  EXPECT_EQ(fs::last_write_time(At("a")), before);
}

TEST_F(RealFiles, CopyOfAReadOnlyFileCanBeReplacedLater) {
  WriteText(At("a"), "content");
  fs::permissions(At("a"), fs::perms::owner_read);
  ASSERT_TRUE(files.CopyFile(At("a"), At("b"), true));
  EXPECT_NE(fs::status(At("b")).permissions() & fs::perms::owner_write, fs::perms::none);
}

TEST_F(RealFiles, RemoveFileTakesFilesAndLinksOnly) {
  WriteText(At("a"), "content");
  fs::create_directory(At("folder"));
  fs::create_symlink(At("a"), At("link"));
  fs::create_symlink(At("folder"), At("folderlink"));
  EXPECT_TRUE(files.RemoveFile(At("link")));
  EXPECT_TRUE(files.RemoveFile(At("folderlink")));
  EXPECT_FALSE(files.RemoveFile(At("folder")));
  EXPECT_FALSE(files.RemoveFile(At("missing")));
  EXPECT_EQ(Here(), "a folder");
  EXPECT_EQ(services.Get().ledger.FailuresSince(0).size(), 1U)
      << "what is merely missing is no failure";
}

// Whoever listens keeps what is there, and need not ask whether anything is.
TEST_F(RealFiles, ListenersHearOfWhatIsThereBeforeItGoes) {
  WriteText(At("a"), "content");
  fs::create_directory(At("folder"));
  std::string heard;
  files.beforeChange = [&](engine::Operation, const std::string& path) {
    heard += path.substr(path.rfind('/') + 1) + (fs::exists(path) ? " " : "? ");
  };
  for (const char* name : {"missing", "a"}) (void)files.RemoveFile(At(name));
  for (const char* name : {"missing", "folder"}) (void)files.RemoveFolder(At(name));
  EXPECT_EQ(heard, "a folder ");
  files.beforeChange = {};
}

TEST_F(RealFiles, RemoveFolderNeverFollowsALink) {
  fs::create_directories(At("kept/deep"));
  WriteText(At("kept/deep/file"), "content");
  fs::create_directories(At("gone/sub/sub"));
  WriteText(At("gone/sub/file"), "content");
  mkfifo(At("gone/pipe").c_str(), 0600);
  fs::create_symlink(At("kept"), At("gone/sub/link"));
  fs::create_symlink(At("kept/deep/file"), At("gone/filelink"));
  EXPECT_TRUE(files.RemoveFolder(At("gone")));
  fs::create_symlink(At("kept"), At("link"));
  EXPECT_TRUE(files.RemoveFolder(At("link/")))
      << "a separator at the end does not lead through the link";
  EXPECT_EQ(Here(), "kept");
  EXPECT_EQ(ReadText(At("kept/deep/file")), "content");
}

TEST_F(RealFiles, RemoveFolderRefusesWhatIsNone) {
  WriteText(At("a"), "content");
  fs::create_symlink(At("a"), At("link"));
  EXPECT_FALSE(files.RemoveFolder(At("a")));
  EXPECT_FALSE(files.RemoveFolder(At("link")));
  EXPECT_FALSE(files.RemoveFolder(At("missing")));
  EXPECT_EQ(Here(), "a link");
}

TEST_F(RealFiles, RemoveFolderNeedsFewHandlesHoweverDeep) {
  std::string path = At("deep");
  for (int depth = 0; depth < 120; ++depth) path += "/next";
  fs::create_directories(path);
  for (int i = 0; i < 60; ++i)
    fs::create_directories(At("deep/next/wide" + std::to_string(i) + "/sub"));
  const Limit handles(RLIMIT_NOFILE, 40);
  EXPECT_EQ(files.RemoveFolder(At("deep")).Message(), "");
  EXPECT_EQ(Here(), "");
}

TEST_F(RealFiles, RenameNeverReplaces) {
  WriteText(At("a"), "a");
  WriteText(At("b"), "b");
  fs::create_directory(At("empty"));
  fs::create_directory(At("folder"));
  EXPECT_FALSE(files.Rename(At("a"), At("b")));
  EXPECT_FALSE(files.Rename(At("a"), At("a")));
  EXPECT_FALSE(files.Rename(At("folder"), At("empty")));
  EXPECT_FALSE(files.Rename(At("missing"), At("c")));
  EXPECT_EQ(ReadText(At("a")) + ReadText(At("b")), "ab");
  EXPECT_TRUE(files.Rename(At("a"), At("c")));
  EXPECT_TRUE(files.Rename(At("folder"), At("moved")));
  EXPECT_EQ(Here(), "b c empty moved");
}

TEST_F(RealFiles, FoldersAreMadeOneAtATimeOrWithTheirParents) {
  WriteText(At("file"), "");
  EXPECT_FALSE(files.MakeFolder(At("a/b")));
  EXPECT_FALSE(files.MakeFolder(At("file")));
  EXPECT_FALSE(files.MakeFolders(At("file/sub")));
  EXPECT_TRUE(files.MakeFolders(At("a/b/c")));
  EXPECT_TRUE(files.MakeFolder(At("a")));
  const std::vector<std::string> made = {At("a"), At("a/b"), At("a/b/c")};
  EXPECT_EQ(services.Get().ledger.WrittenSince(0), made);
}

TEST_F(RealFiles, ListsPlainFilesInByteOrder) {
  for (const char* name : {"b", "B", "a10", "a2", ".hidden", "\xc3\xa4"}) WriteText(At(name), "");
  fs::create_directory(At("folder"));
  mkfifo(At("pipe").c_str(), 0600);
  fs::create_symlink(At("b"), At("link"));
  fs::create_symlink(At("nowhere"), At("dangling"));
  const std::vector<std::string> names = {".hidden", "B", "a10", "a2", "b", "link", "\xc3\xa4"};
  EXPECT_EQ(files.ListFiles(scratch.Path()).Value(), names);
  EXPECT_FALSE(files.ListFiles(At("b")));
}

TEST_F(RealFiles, AHeldFileIsHeldOnceUntilItIsLetGo) {
  EXPECT_FALSE(engine::HoldFile(At("missing")));
  WriteText(At("held"), "");
  {
    const auto first = engine::HoldFile(At("held"));
    EXPECT_TRUE(first);
    EXPECT_FALSE(engine::HoldFile(At("held")));
  }
  EXPECT_TRUE(engine::HoldFile(At("held")));
  EXPECT_EQ(Here(), "held");
}

TEST_F(RealFiles, AFileIsNotSeenBeforeItIsComplete) {
  const engine::FileHandle unnamed(open(scratch.Path().c_str(), O_WRONLY | O_TMPFILE, 0600));
  WriteText(At("a"), "old");
  std::string seen;
  const std::string_view bytes = "new";
  const auto look = [&] {
    seen = Here() + ": " + ReadText(At("a"));
    return Status();
  };
  ASSERT_TRUE(files.ReplaceFile(At("a"), std::span(&bytes, 1), {look, ""}));
  if (unnamed) {
    EXPECT_EQ(seen, "a: old");
  }
  EXPECT_EQ(Here() + ": " + ReadText(At("a")), "a: new");
  const auto refuse = [] { return Status::Failure("No."); };
  EXPECT_EQ(files.ReplaceFile(At("b"), std::span(&bytes, 1), {refuse, ""}).Message(), "No.");
  EXPECT_EQ(Here(), "a");
}

TEST_F(RealFiles, WhatKilledProgramsLeftIsRemovedAndWhatOthersWriteIsNot) {
  for (const char* name :
       {".stagemarks-1-2.tmp", ".stagemarks-3-4.tmp", ".stagemarks-notes", ".other.tmp"})
    WriteText(At(name), "x");
  const auto writing = engine::HoldFile(At(".stagemarks-3-4.tmp"));
  ASSERT_TRUE(files.ReplaceFile(At("a"), "a"));
  EXPECT_EQ(Here(), ".other.tmp .stagemarks-3-4.tmp .stagemarks-notes a");
  // Killed while this program goes on.
  WriteText(At(".stagemarks-5-6.tmp"), "x");
  for (int writes = 0; writes < 10; ++writes) ASSERT_TRUE(files.ReplaceFile(At("a"), "b"));
  EXPECT_EQ(Here(), ".other.tmp .stagemarks-3-4.tmp .stagemarks-notes a");
}

// The version before is another name of the same bytes where the disk can, else a copy.
TEST_F(RealFiles, TheReplacedFileIsKeptWhereItIsToBe) {
  const std::string_view pieces[] = {"third"};
  WriteText(At("a"), "first");
  fs::permissions(At("a"), fs::perms::owner_read | fs::perms::owner_write);
  const auto keepAt = [&](const std::string& place, const char* bytes) {
    const std::string_view view = bytes;
    return files.ReplaceFile(At("a"), std::span(&view, 1), {{}, place});
  };
  ASSERT_TRUE(keepAt(At("state/deep/a"), "second"));
  EXPECT_EQ(ReadText(At("state/deep/a")) + ", " + ReadText(At("a")), "first, second");
  ASSERT_TRUE(files.ReplaceFile(At("a"), pieces, {{}, At("state/deep/a")}));
  EXPECT_EQ(ReadText(At("state/deep/a")) + ", " + ReadText(At("a")), "second, third");
  EXPECT_EQ(Names(At("state/deep")), "a");
  ASSERT_TRUE(keepAt(At("a~"), "fourth"));
  EXPECT_EQ(ReadText(At("a~")), "third");
  const auto refuse = [] { return Status::Failure("No."); };
  EXPECT_FALSE(files.ReplaceFile(At("a"), pieces, {refuse, At("a~")}));
  EXPECT_EQ(ReadText(At("a~")), "third") << "what was not replaced is no version before";
  // Nothing was there; what cannot be kept is no reason not to save.
  ASSERT_TRUE(files.ReplaceFile(At("new"), pieces, {{}, At("new~")}));
  ASSERT_TRUE(keepAt(At("new/no/folder"), "fifth"));
  EXPECT_EQ(services.Get().ledger.NotesSince(0).size(), 1U);
  EXPECT_EQ(Here(), "a a~ new state");
}

TEST_F(RealFiles, ALockIsOnTheFileThatThePathLeadsTo) {
  using engine::FileLock;
  WriteText(At("a"), "a");
  fs::create_symlink(At("a"), At("link"));
  const auto mayBeTaken = [&](const char* name) {
    return FileLock::Try(At(name)).Value().has_value();
  };
  {
    const auto lock = FileLock::Try(At("link"));
    EXPECT_TRUE(lock.Value()->Covers(At("a")));
    EXPECT_FALSE(mayBeTaken("a"));
    EXPECT_FALSE(FileLock::Take(At("a"), std::chrono::milliseconds(0)));
    double waited = -1;
    const auto stop = [&](double share) {
      waited = share;
      return false;
    };
    EXPECT_EQ(FileLock::Take(At("a"), std::chrono::hours(100000), stop).Message(),
              "Did not change \"" + At("a") + "\": the waiting was stopped.");
    EXPECT_TRUE(waited >= 0 && waited < 1e-3) << waited << " of eleven years";
    ASSERT_TRUE(files.ReplaceFile(At("a"), "b"));
    EXPECT_FALSE(lock.Value()->Covers(At("a")));
    EXPECT_TRUE(mayBeTaken("link")) << "the new file is nobody's";
  }
  fs::create_directory(At("closed"));
  WriteText(At("closed/a"), "a");
  fs::permissions(At("closed/a"), fs::perms::owner_read);
  fs::permissions(At("closed"), fs::perms::owner_read | fs::perms::owner_exec);
  EXPECT_TRUE(mayBeTaken("closed/a"));
  mkfifo(At("pipe").c_str(), 0600);
  for (const char* nothing : {"missing", "pipe", "closed"})
    EXPECT_TRUE(mayBeTaken(nothing)) << "there is nothing to lock";
  fs::permissions(At("closed"), fs::perms::owner_all);
  EXPECT_EQ(Here() + ", " + Names(At("closed")), "a closed link pipe, a");
}

}  // namespace
