#include "engine/outside/Ledger.h"

#include <gtest/gtest.h>

#include "engine/outside/FaultyOutside.h"
#include "engine/outside/RealOutside.h"
#include "engine/outside/ScriptedOutside.h"
#include "tests/support/ScratchFolder.h"

namespace {

using engine::Fault;
using engine::FaultyOutside;
using engine::Operation;
using engine::RealOutside;
using engine::ScriptedOutside;
using tests::ScratchFolder;
using Paths = std::vector<std::string>;

TEST(Ledger, WrittenPathsFollowWhatBecameOfThem) {
  const ScratchFolder scratch;
  RealOutside outside;
  const auto& ledger = outside.GetLedger();
  ASSERT_TRUE(outside.ReplaceFile(scratch / "before", "x"));
  const std::size_t mark = ledger.Mark();
  ASSERT_TRUE(outside.MakeFolder(scratch / "z"));
  ASSERT_TRUE(outside.ReplaceFile(scratch / "z/a", "1"));
  ASSERT_TRUE(outside.ReplaceFile(scratch / "z/a", "2"));
  ASSERT_TRUE(outside.CopyFile(scratch / "z/a", scratch / "copy", true));
  EXPECT_EQ(ledger.WrittenSince(mark), Paths({scratch / "z", scratch / "z/a", scratch / "copy"}));
  ASSERT_TRUE(outside.Rename(scratch / "z", scratch / "y"));
  EXPECT_EQ(ledger.WrittenSince(mark), Paths({scratch / "copy", scratch / "y", scratch / "y/a"}));
  ASSERT_TRUE(outside.RemoveFolder(scratch / "y"));
  ASSERT_TRUE(outside.ReplaceFile(scratch / "yes", "3"));
  EXPECT_EQ(ledger.WrittenSince(mark), Paths({scratch / "copy", scratch / "yes"}));
}

TEST(Ledger, AskingForWhatIsMissingIsNoFailure) {
  const ScratchFolder scratch;
  RealOutside outside;
  const auto& ledger = outside.GetLedger();
  const std::string missing = scratch / "missing";
  EXPECT_FALSE(outside.ReadFile(missing));
  EXPECT_FALSE(outside.ListFiles(missing));
  EXPECT_FALSE(outside.RemoveFolder(missing));
  EXPECT_FALSE(outside.Rename(missing, scratch / "x"));
  EXPECT_EQ(ledger.Mark(), 4U);
  EXPECT_EQ(ledger.FailuresSince(0).size(), 0U);
  EXPECT_FALSE(outside.CopyFile(missing, scratch / "x", true));
  EXPECT_FALSE(outside.ReadFile("missing"));
  ASSERT_EQ(ledger.FailuresSince(0).size(), 2U);
  EXPECT_EQ(ledger.FailuresSince(0)[0].message,
            "Cannot read \"" + missing + "\": No such file or directory.");
}

TEST(FaultyOutside, BreaksTheOperationItIsToldTo) {
  const ScratchFolder scratch;
  RealOutside real;
  FaultyOutside faulty(real);
  faulty.Break(2, Fault::Fail);
  EXPECT_TRUE(faulty.ReplaceFile(scratch / "a", "abcdef"));
  EXPECT_EQ(faulty.ReadFile(scratch / "a").Message(),
            "Cannot work on \"" + scratch / "a" + "\": Input/output error.");
  EXPECT_TRUE(faulty.ReadFile(scratch / "a"));
  faulty.Break(1, Fault::CutShort, Operation::ReadFile);
  EXPECT_TRUE(faulty.MakeFolder(scratch / "folder"));
  EXPECT_EQ(faulty.ReadFile(scratch / "a").Value(), "abc");
  EXPECT_EQ(faulty.ReadFile(scratch / "a").Value(), "abcdef");
  faulty.BreakFrom(2);
  EXPECT_TRUE(faulty.CopyFile(scratch / "a", scratch / "b", false));
  EXPECT_FALSE(faulty.RemoveFile(scratch / "b"));
  EXPECT_FALSE(faulty.RemoveFile(scratch / "b"));
  EXPECT_EQ(faulty.GetLedger().FailuresSince(0).size(), 3U);
  faulty.Mend();
  EXPECT_TRUE(faulty.RemoveFile(scratch / "b"));
}

TEST(ScriptedOutside, AnswersInOrderAndWritesItDown) {
  ScriptedOutside outside;
  outside.AnswerNext(true);
  outside.ChooseNext("/target");
  EXPECT_TRUE(outside.Ask("Overwrite?"));
  EXPECT_FALSE(outside.Ask("Really?"));
  EXPECT_EQ(outside.ChooseFile({0, 2, "Folder", ""}), "/target");
  EXPECT_EQ(outside.ChooseFile({0, 2, "Folder", ""}), std::nullopt);
  outside.Tell("Done");
  outside.ShowStatus("Busy");
  outside.ClearStatus();
  EXPECT_EQ(outside.TakeTranscript(),
            "ask: Overwrite? -> yes\nask: Really? -> no\nchoose: Folder -> /target\nchoose: Folder "
            "-> (canceled)\n"
            "tell: Done\nstatus: Busy\nstatus cleared\n");
  EXPECT_EQ(outside.TakeTranscript(), "");
}

TEST(ScriptedOutside, HasNoUserFoldersUnlessGivenOne) {
  ScriptedOutside none;
  EXPECT_EQ(none.ConfigFolder(), "");
  EXPECT_FALSE(none.MakeFolders(none.ConfigFolder()));
  ScriptedOutside own("/place");
  EXPECT_EQ(own.ConfigFolder() + own.DataFolder() + own.CacheFolder() + own.StateFolder(),
            "/place/config/place/data/place/cache/place/state");
}

}  // namespace
