#include "engine/application/Preferences.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <iomanip>
#include <limits>
#include <sstream>

#include "engine/core/ContainerContents.h"
#include "engine/scenefile/FileAsRead.h"
#include "tests/support/ScratchFolder.h"
#include "tests/support/ScriptedServices.h"

namespace {

using engine::Preferences;
using host::BaseContainer;
using host::GeData;
using Reals = std::numeric_limits<host::Real>;

constexpr host::LONG kId = 1026486;

struct WorldData : testing::Test {
  static BaseContainer Simple(host::LONG value) {
    BaseContainer data(3);
    data.SetLong(1, value);
    return data;
  }

  host::LONG Stored(host::LONG id = kId) {
    Preferences fresh(services.Get());
    const BaseContainer* data = fresh.Get(id);
    return data == nullptr ? -1 : data->GetLong(1);
  }

  // What was noted since is that the file was damaged for this reason; nothing where there is none.
  void ExpectNote(std::size_t mark, const char* reason) {
    const std::vector<std::string> notes = services.ledger.NotesSince(mark);
    ASSERT_EQ(notes.size(), reason ? 1U : 0U);
    if (reason) {
      EXPECT_EQ(notes[0].find(std::string("The preferences were damaged (") + reason + ");"), 0U)
          << notes[0];
    }
  }

  tests::ScratchFolder scratch;
  tests::ScriptedServices services{scratch.Path()};
  const std::string folder = scratch / "config";
  const std::string file = folder + "/preferences";
};

BaseContainer EveryKind() {
  BaseContainer data(99);
  data.SetLong(5, std::numeric_limits<host::LONG>::min());
  data.SetLong(4, std::numeric_limits<host::LONG>::max());
  host::LONG key = 10;
  for (const host::Real real :
       {0.713, -0.0, 1e-310, Reals::max(), Reals::infinity(), -Reals::infinity(), 0.1 + 0.2}) {
    data.SetReal(key++, real);
  }
  for (const char* text :
       {"", " ", "end", "two\nlines\r\t", "100%", "\xc3\xa4\xff", " leading and trailing "}) {
    data.SetString(key, text);
    data.SetFilename(key + 100, text);
    ++key;
  }
  data.SetString(key, host::String(std::string_view("nul\0byte", 8)));
  data.SetVector(200, host::Vector(1, -2.5, 1e300));
  data.SetTime(201, host::BaseTime(25, 0));
  data.SetData(202, GeData());
  data.SetData(203, engine::LinkValue(0));
  data.SetData(204, engine::LinkValue(~0ULL));
  BaseContainer inner(-7);
  inner.SetContainer(1, BaseContainer(8));
  inner.SetLong(-1, 2);
  data.SetContainer(205, inner);
  data.SetLong(-6, 6);
  return data;
}

TEST_F(WorldData, KeepsEveryKindOfValueAndTheOrder) {
  Preferences writer(services.Get());
  ASSERT_TRUE(writer.Set(kId, EveryKind(), false));
  ASSERT_TRUE(writer.Set(-5, Simple(1), false));
  Preferences reader(services.Get());
  ASSERT_NE(reader.Get(kId), nullptr);
  EXPECT_TRUE(engine::Identical(*reader.Get(kId), EveryKind()));
  EXPECT_EQ(reader.Get(-5)->GetLong(1), 1);
  EXPECT_EQ(reader.Get(1), nullptr);
}

TEST_F(WorldData, MergesOrReplaces) {
  Preferences preferences(services.Get());
  BaseContainer second;
  second.SetLong(2, 22);
  ASSERT_TRUE(preferences.Set(kId, Simple(11), true));
  ASSERT_TRUE(preferences.Set(kId, second, true));
  EXPECT_EQ(preferences.Get(kId)->GetCount(), 2);
  ASSERT_TRUE(preferences.Set(kId, second, false));
  EXPECT_EQ(preferences.Get(kId)->GetCount(), 1);
  ASSERT_TRUE(preferences.Set(kId, *preferences.Get(kId), true))
      << "its own container is a fit argument";
  EXPECT_EQ(preferences.Get(kId)->GetLong(2), 22);
}

TEST_F(WorldData, NothingStoredIsNothingAndTouchesNoFile) {
  EXPECT_EQ(Stored(), -1);
  EXPECT_EQ(tests::Names(scratch.Path()), "");
  EXPECT_TRUE(services.ledger.FailuresSince(0).empty());
}

TEST_F(WorldData, TwoProgramsKeepEachOthersSettings) {
  Preferences one(services.Get());
  Preferences other(services.Get());
  EXPECT_EQ(one.Get(1), nullptr);
  EXPECT_EQ(other.Get(1), nullptr);
  ASSERT_TRUE(one.Set(1, Simple(10), false));
  ASSERT_TRUE(other.Set(2, Simple(20), false));
  EXPECT_EQ(Stored(1), 10);
  EXPECT_EQ(Stored(2), 20);
}

TEST_F(WorldData, AFailedWriteHoldsForTheSessionAndTheOldFileStays) {
  Preferences preferences(services.Get());
  ASSERT_TRUE(preferences.Set(kId, Simple(1), false));
  services.files.Break(1, tests::Fault::Fail, engine::Operation::ReplaceFile);
  EXPECT_FALSE(preferences.Set(kId, Simple(2), false));
  EXPECT_EQ(preferences.Get(kId)->GetLong(1), 2);
  EXPECT_EQ(Stored(), 1);
  ASSERT_TRUE(preferences.Set(5, Simple(5), false));
  EXPECT_EQ(Stored(), 2);
  EXPECT_EQ(tests::Names(folder), "preferences");
}

TEST_F(WorldData, AnUnreadableFileIsNotOverwritten) {
  Preferences first(services.Get());
  ASSERT_TRUE(first.Set(kId, Simple(1), false));
  Preferences second(services.Get());
  services.files.BreakFrom(1, engine::Operation::ReadFile);
  EXPECT_EQ(second.Get(kId), nullptr);
  EXPECT_FALSE(second.Set(5, Simple(5), false));
  services.files.Mend();
  EXPECT_EQ(Stored(), 1);
}

TEST_F(WorldData, EveryDamageIsSeenAndKeptAside) {
  Preferences writer(services.Get());
  ASSERT_TRUE(writer.Set(kId, Simple(77), false));
  const std::string whole = tests::ReadText(file);
  std::vector<std::string> damaged;
  for (std::size_t i = 0; i < whole.size(); ++i) {
    damaged.push_back(i % 2 == 0 ? whole.substr(0, i) : whole);
    if (i % 2 != 0) damaged.back()[i] = static_cast<char>(damaged.back()[i] ^ (1 << i % 8));
  }
  damaged.push_back(whole + "\n");
  for (const std::string& text : damaged) {
    tests::WriteText(file, text);
    EXPECT_EQ(Stored(), -1) << text;
    EXPECT_EQ(tests::ReadText(file + ".damaged"), text);
    EXPECT_FALSE(std::filesystem::exists(file));
  }
}

TEST_F(WorldData, DamageIsNotedAndTheNextSettingStartsAnew) {
  ASSERT_TRUE(services.files.MakeFolders(folder));
  tests::WriteText(file, "stagemarks preferences 1\nlong 1 1\nchecksum 0000000000000000\n");
  EXPECT_EQ(Stored(), -1);
  const std::vector<std::string> notes = services.ledger.NotesSince(0);
  ASSERT_EQ(notes.size(), 1U);
  EXPECT_EQ(notes[0],
            "The preferences were damaged (the checksum does not fit); the defaults apply, the old "
            "file is \"" +
                file + ".damaged\".");
  Preferences preferences(services.Get());
  ASSERT_TRUE(preferences.Set(kId, Simple(3), true));
  EXPECT_EQ(Stored(), 3);
  EXPECT_EQ(tests::Names(folder), "preferences preferences.damaged");
}

TEST_F(WorldData, ALaterVersionIsLeftAlone) {
  ASSERT_TRUE(services.files.MakeFolders(folder));
  const std::string later = "stagemarks preferences 3\nsomething new\n";
  tests::WriteText(file, later);
  Preferences preferences(services.Get());
  EXPECT_EQ(preferences.Get(kId), nullptr);
  const engine::Status status = preferences.Set(kId, Simple(1), true);
  EXPECT_EQ(status.Message(),
            "The preferences \"" + file +
                "\" are of a later version of this program; they stay as they are.");
  EXPECT_EQ(preferences.Get(kId)->GetLong(1), 1) << "for this session";
  EXPECT_EQ(tests::ReadText(file), later);
}

// Version 1 had a format of its own. What was kept in it is read, and written anew with the next
// change.
TEST_F(WorldData, FilesOfVersion1AreReadAndWrittenAnew) {
  const std::string former =
      "stagemarks preferences 1\n"
      "container -5 3\n"
      "long 1 -7\n"
      "end\n"
      "container 1026486 99\n"
      "real 10 0.713\n"
      "real 11 -inf\n"
      "string 12 two%0alines 100%25\n"
      "filename 13 /a/b.c4d\n"
      "time 14 25 30\n"
      "vector 15 1 -2.5 1e+300\n"
      "link 16 18446744073709551615\n"
      "nil 17\n"
      "container 205 -7\n"
      "long -1 2\n"
      "end\n"
      "end\n"
      "checksum 62ff217210972222\n";
  ASSERT_TRUE(services.files.MakeFolders(folder));
  tests::WriteText(file, former);
  BaseContainer expected(99);
  expected.SetReal(10, 0.713);
  expected.SetReal(11, -Reals::infinity());
  expected.SetString(12, "two\nlines 100%");
  expected.SetFilename(13, "/a/b.c4d");
  expected.SetTime(14, host::BaseTime(25, 30));
  expected.SetVector(15, host::Vector(1, -2.5, 1e300));
  expected.SetData(16, engine::LinkValue(~0ULL));
  expected.SetData(17, GeData());
  BaseContainer inner(-7);
  inner.SetLong(-1, 2);
  expected.SetContainer(205, inner);
  Preferences preferences(services.Get());
  ASSERT_NE(preferences.Get(kId), nullptr);
  EXPECT_TRUE(engine::Identical(*preferences.Get(kId), expected));
  EXPECT_EQ(tests::ReadText(file), former) << "reading changes nothing";
  ASSERT_TRUE(preferences.Set(5, Simple(5), false));
  EXPECT_EQ(tests::ReadText(file).rfind("stagemarks preferences 2 ", 0), 0U);
  EXPECT_EQ(Stored(-5), -7);
  Preferences reader(services.Get());
  ASSERT_NE(reader.Get(kId), nullptr);
  EXPECT_TRUE(engine::Identical(*reader.Get(kId), expected));
  EXPECT_EQ(tests::Names(folder), "preferences");
}

// Their sum is that of what they hold, and what they hold makes no sense.
TEST_F(WorldData, FilesOfVersion1ThatMakeNoSenseAreRefused) {
  std::string deep;
  for (int i = 0; i < 1001; ++i) deep += "container 5 3\n";
  const std::pair<std::string, const char*> rows[] = {
      {"container 5 3\nlong 1 77\nend\n", nullptr},
      {"end\ncontainer 5 3\nlong 1 77\nend\n", "line 2 cannot be understood"},
      {"container 5 3\nlong 1 77\n", "a container has no end"},
      {"long 1 77\n", "line 2 cannot be understood"},
      {"container 5 3\nlong 1\nend\n", "line 3 cannot be understood"},
      {"container 5 3\nlink 1\nend\n", "line 3 cannot be understood"},
      {"container 5 3\nlength 1 77\nend\n", "line 3 cannot be understood"},
      {"container 5 3\ntriple 1 2 3 4\nend\n", "line 3 cannot be understood"},
      {"container 5 3\nreal 1\nend\n", "line 3 cannot be understood"},
      {"container 5 3\ntime 1 2\nend\n", "line 3 cannot be understood"},
      {"container 5 3\nvector 1 2 3\nend\n", "line 3 cannot be understood"},
      {"container 5 3\nlong 1 77\nstring 2 %0\nend\n", "line 4 cannot be understood"},
      {"container 5 3\nlong 1 77\nstring 2 %0g\nend\n", "line 4 cannot be understood"},
      {"container 5 3\nlong 1 77 7\nend\n", "line 3 cannot be understood"},
      {"container 5\nlong 1 77\nend\n", "line 2 cannot be understood"},
      {"container 5 3\nlong 1 77\nend\nend\n", "line 5 cannot be understood"},
      {deep, "line 1002 cannot be understood"}};
  ASSERT_TRUE(services.files.MakeFolders(folder));
  for (const auto& [body, reason] : rows) {
    const std::size_t mark = services.ledger.Mark();
    const std::string text = std::string("stagemarks preferences 1\n") + body;
    std::uint64_t sum = 14695981039346656037U;
    for (const char c : text) sum = (sum ^ static_cast<unsigned char>(c)) * 1099511628211U;
    std::ostringstream line;
    line << "checksum " << std::hex << std::setw(16) << std::setfill('0') << sum << "\n";
    tests::WriteText(file, text + line.str());
    EXPECT_EQ(Stored(5), reason ? -1 : 77) << body;
    EXPECT_EQ(std::filesystem::exists(file), reason == nullptr) << body;
    ExpectNote(mark, reason);
  }
}

// The same of this version.
TEST_F(WorldData, FilesThatMakeNoSenseAreRefused) {
  const auto nested = [](int depth) {
    std::string text = R"({"id": 3, "entries": [[1, "long", 77]]})";
    for (int i = 1; i < depth; ++i)
      text = R"({"id": 3, "entries": [[1, "long", 77], [2, "container", )" + text + "]]}";
    return R"([[5, "container", )" + text + "]]";
  };
  const auto entry = [](const std::string& one) {
    return R"([[5, "container", {"id": 3, "entries": [[1, "long", 77], )" + one + "]}]]";
  };
  const std::pair<std::string, bool> rows[] = {{entry(R"([2, "nil", null])"), true},
                                               {entry(R"([2, "string", [255, 0]])"), true},
                                               {nested(1000), true},
                                               {nested(1001), false},
                                               {entry(R"([2, "length", 1])"), false},
                                               {entry(R"([2, "real", "much"])"), false},
                                               {entry(R"([2, "vector", [1, 2]])"), false},
                                               {entry(R"([2, "string", [256, "x"]])"), false},
                                               {entry(R"([2, "long"])"), false},
                                               {entry(R"({"2": 2})"), false},
                                               {"[[5]]", false},
                                               {"[", false},
                                               {"", false}};
  ASSERT_TRUE(services.files.MakeFolders(folder));
  for (const auto& [body, isSense] : rows) {
    const std::size_t mark = services.ledger.Mark();
    const std::string_view bytes = body;
    std::ostringstream head;
    head << "stagemarks preferences 2 " << std::hex << std::setw(16) << std::setfill('0')
         << engine::HashOfContent({&bytes, 1}) << "\n";
    tests::WriteText(file, head.str() + body);
    EXPECT_EQ(Stored(5), isSense ? 77 : -1) << body;
    ExpectNote(mark, isSense ? nullptr : "an entry cannot be understood");
  }
  for (const char* head : {"stagemarks preferences 2", "stagemarks preferences 2\n[]",
                           "stagemarks preferences 0\n", "stagemarks preferences 1 \n"}) {
    const std::size_t mark = services.ledger.Mark();
    tests::WriteText(file, head);
    EXPECT_EQ(Stored(5), -1) << head;
    ExpectNote(mark, std::string(head).back() == '2' ? "the first line is not ours"
                                                     : "the checksum does not fit");
  }
}

TEST_F(WorldData, WithoutAUserFolderNothingIsWritten) {
  tests::ScriptedServices nowhere;
  Preferences preferences(nowhere.Get());
  EXPECT_EQ(preferences.Get(kId), nullptr);
  EXPECT_FALSE(preferences.Set(kId, Simple(1), true));
}

TEST_F(WorldData, ContainersNestedTooDeepAreRefusedAndForgotten) {
  BaseContainer deep;
  for (int i = 0; i < 1200; ++i) {
    BaseContainer outer;
    outer.SetContainer(1, deep);
    deep = outer;
  }
  Preferences preferences(services.Get());
  EXPECT_FALSE(preferences.Set(kId, deep, false));
  EXPECT_TRUE(preferences.Set(5, Simple(5), false));
  EXPECT_EQ(Stored(5), 5);
  EXPECT_EQ(Stored(), -1);
}

}  // namespace
