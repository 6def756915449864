#include "engine/outside/Ledger.h"

#include <gtest/gtest.h>

#include "tests/support/ScratchFolder.h"
#include "tests/support/ScriptedServices.h"

namespace {

using engine::Operation;
using tests::Fault;
using tests::ScratchFolder;
using tests::ScriptedServices;
using Paths = std::vector<std::string>;

TEST(Ledger, WrittenPathsFollowWhatBecameOfThem) {
  const ScratchFolder scratch;
  ScriptedServices services;
  engine::FileSystem& files = services.files;
  const engine::Ledger& ledger = services.ledger;
  ASSERT_TRUE(files.ReplaceFile(scratch / "before", "x"));
  const std::size_t mark = ledger.Mark();
  ASSERT_TRUE(files.MakeFolder(scratch / "z"));
  ASSERT_TRUE(files.ReplaceFile(scratch / "z/a", "1"));
  ASSERT_TRUE(files.ReplaceFile(scratch / "z/a", "2"));
  ASSERT_TRUE(files.CopyFile(scratch / "z/a", scratch / "copy", true));
  EXPECT_EQ(ledger.WrittenSince(mark), Paths({scratch / "z", scratch / "z/a", scratch / "copy"}));
  ASSERT_TRUE(files.Rename(scratch / "z", scratch / "y"));
  EXPECT_EQ(ledger.WrittenSince(mark), Paths({scratch / "copy", scratch / "y", scratch / "y/a"}));
  ASSERT_TRUE(files.RemoveFolder(scratch / "y"));
  ASSERT_TRUE(files.ReplaceFile(scratch / "yes", "3"));
  EXPECT_EQ(ledger.WrittenSince(mark), Paths({scratch / "copy", scratch / "yes"}));
  // What failed changed nothing, and what went is written no more.
  EXPECT_FALSE(files.Rename(scratch / "copy", scratch / "yes"));
  EXPECT_FALSE(files.CopyFile(scratch / "copy", scratch / "yes", false));
  EXPECT_FALSE(files.RemoveFolder(scratch / "yes"));
  ASSERT_TRUE(files.RemoveFile(scratch / "copy"));
  ASSERT_TRUE(files.ReplaceFile(scratch / "last", "4"));
  EXPECT_EQ(ledger.WrittenSince(mark), Paths({scratch / "yes", scratch / "last"}));
}

TEST(Ledger, TellsNotesFromFailures) {
  engine::Ledger ledger;
  ledger.Add({Operation::ReplaceFile, "/a", "", true, "no note"});
  ledger.AddNote("/a", "a note");
  ledger.Add({Operation::Note, "/b", "", false, "a failure"});
  EXPECT_EQ(ledger.NotesSince(0), Paths({"a note"}));
  EXPECT_EQ(ledger.NotesSince(2), Paths());
  ASSERT_EQ(ledger.FailuresSince(0).size(), 1U);
  EXPECT_EQ(ledger.FailuresSince(0)[0].message, "a failure");
  EXPECT_EQ(ledger.WrittenSince(0), Paths({"/a"}));
}

TEST(Ledger, AskingForWhatIsMissingIsNoFailure) {
  const ScratchFolder scratch;
  ScriptedServices services;
  engine::FileSystem& files = services.files;
  const engine::Ledger& ledger = services.ledger;
  const std::string missing = scratch / "missing";
  EXPECT_FALSE(files.ReadFile(missing));
  EXPECT_FALSE(files.ListFiles(missing));
  EXPECT_FALSE(files.RemoveFolder(missing));
  EXPECT_FALSE(files.Rename(missing, scratch / "x"));
  EXPECT_EQ(ledger.Mark(), 4U);
  EXPECT_EQ(ledger.FailuresSince(0).size(), 0U);
  EXPECT_FALSE(files.CopyFile(missing, scratch / "x", true));
  EXPECT_FALSE(files.ReadFile("missing"));
  ASSERT_EQ(ledger.FailuresSince(0).size(), 2U);
  EXPECT_EQ(ledger.FailuresSince(0)[0].message,
            "Cannot read \"" + missing + "\": No such file or directory.");
}

TEST(FaultyFileSystem, BreaksTheOperationItIsToldTo) {
  const ScratchFolder scratch;
  ScriptedServices services;
  tests::FaultyFileSystem& faulty = services.files;
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
  EXPECT_EQ(services.ledger.FailuresSince(0).size(), 3U);
  faulty.Mend();
  EXPECT_TRUE(faulty.RemoveFile(scratch / "b"));
}

TEST(ScriptedPerson, AnswersInOrderAndWritesItDown) {
  tests::ScriptedPerson person;
  person.AnswerNext(true);
  person.ChooseNext("/target");
  EXPECT_TRUE(person.Ask("Overwrite?"));
  EXPECT_FALSE(person.Ask("Really?"));
  EXPECT_EQ(person.ChooseFile({0, 2, "Folder", ""}), "/target");
  EXPECT_EQ(person.ChooseFile({0, 2, "Folder", ""}), std::nullopt);
  person.Tell("Done");
  person.ShowStatus("Busy");
  person.ClearStatus();
  EXPECT_EQ(person.TakeTranscript(),
            "ask: Overwrite? -> yes\nask: Really? -> no\nchoose: Folder -> /target\nchoose: Folder "
            "-> (canceled)\n"
            "tell: Done\nstatus: Busy\nstatus cleared\n");
  EXPECT_EQ(person.TakeTranscript(), "");
}

TEST(ScriptedServices, HasNoUserFoldersUnlessGivenOne) {
  const ScriptedServices none;
  EXPECT_EQ(none.folders.config, "");
  EXPECT_FALSE(none.Get().files.MakeFolders(none.folders.config));
  const ScriptedServices own("/place");
  EXPECT_EQ(own.folders.config + own.folders.data + own.folders.cache + own.folders.state,
            "/place/config/place/data/place/cache/place/state");
}

}  // namespace
