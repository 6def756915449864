// One container to bytes and back, and the columns below it.
#include "tests/scenefile/CodedContainer.h"

#include <gtest/gtest.h>

#include <limits>

#include "engine/core/ContainerContents.h"
#include "engine/scenefile/Columns.h"
#include "engine/scenefile/ValueSections.h"
#include "tests/scenefile/Scenes.h"

namespace tests {
namespace {

using namespace engine;
using host::BaseContainer;

TEST(CodedContainer, KeepsEveryValueAndOwnId) {
  for (const BaseContainer& container :
       {BaseContainer(), BaseContainer(5), EveryValue(nullptr), Records(300, 5)}) {
    const auto decoded = DecodeContainer(EncodeContainer(container));
    ASSERT_TRUE(decoded) << decoded.Message();
    EXPECT_TRUE(engine::Identical(decoded.Value(), container));
  }
}

TEST(CodedContainer, TakesSomeBytesPerRecordOnly) {
  const std::string bytes = EncodeContainer(Records(100000, 1));
  EXPECT_LT(bytes.size(), 30000u);
}

// All words of these are 0: records are told apart by their own ID, keys, types and number alone,
// also where one is expected since it followed the last time.
TEST(CodedContainer, TellsRecordsApartByOneThing) {
  std::vector<BaseContainer> records(3);
  for (const host::LONG id : {0, 6}) {
    for (const host::LONG key : {4, 5}) {
      const auto add = [&](const auto& set) { set(records.emplace_back(id)); };
      add([&](BaseContainer& c) { c.SetLong(key, 0); });
      add([&](BaseContainer& c) { c.SetReal(key, 0); });
      add([&](BaseContainer& c) { c.SetData(key, host::GeData()); });
      add([&](BaseContainer& c) { c.SetString(key, ""); });
      add([&](BaseContainer& c) { c.SetFilename(key, host::Filename()); });
      add([&](BaseContainer& c) { c.SetVector(key, host::Vector(1)); });
      add([&](BaseContainer& c) { c.SetTime(key, host::BaseTime(3, 25)); });
      add([&](BaseContainer& c) { c.SetContainer(key, BaseContainer()); });
      add([&](BaseContainer& c) { c.SetLink(key, nullptr); });
      add([&](BaseContainer& c) {
        c.SetLong(key, 0);
        c.SetLong(9, 0);
      });
    }
  }
  BaseContainer all;
  for (const BaseContainer& a : records) {
    BaseContainer pairs;
    for (const BaseContainer& b : records) {
      pairs.SetContainer(pairs.GetCount(), a);
      pairs.SetContainer(pairs.GetCount(), b);
    }
    all.SetContainer(all.GetCount(), pairs);
  }
  const auto decoded = DecodeContainer(EncodeContainer(all));
  ASSERT_TRUE(decoded) << decoded.Message();
  EXPECT_TRUE(engine::Identical(decoded.Value(), all));
}

// A list that differs little from an earlier one, which holds deeper containers than it does, and
// from others between them.
TEST(CodedContainer, WritesAListBehindTheOneThatItChanges) {
  BaseContainer deep;
  for (int i = 0; i < 4; ++i) {
    BaseContainer outer;
    outer.SetContainer(1, deep);
    deep = outer;
  }
  BaseContainer list;
  for (host::LONG i = 0; i < 200; ++i) list.SetLong(i, i * i);
  BaseContainer all;
  all.SetContainer(0, list);
  for (host::LONG i = 1; i < 30; ++i) {
    BaseContainer other = list;
    if (i % 3 == 0) other.SetContainer(i, deep);
    if (i % 3 == 1) other.SetContainer(300 + i, BaseContainer(i));
    if (i % 3 == 2) other.SetString(i - 2, "text");
    other.SetId(i / 2);
    all.SetContainer(i, other);
    if (i % 4 == 0) list = other;
  }
  const std::string bytes = EncodeContainer(all);
  EXPECT_LT(bytes.size(), 2000U);
  const auto decoded = DecodeContainer(bytes);
  ASSERT_TRUE(decoded) << decoded.Message();
  EXPECT_TRUE(engine::Identical(decoded.Value(), all));
}

// Equal contents that share no memory are found by their contents.
TEST(CodedContainer, StoresEqualContainersOnceHoweverTheyWereMade) {
  BaseContainer twice;
  twice.SetContainer(1, Records(1000, 1));
  const std::size_t once = EncodeContainer(twice).size();
  twice.SetContainer(2, Records(1000, 1));
  EXPECT_LT(EncodeContainer(twice).size(), once + 16);
}

TEST(CodedContainer, RefusesSceneFilesAndDamage) {
  EXPECT_EQ(DecodeContainer(Bytes(*EmptyScene())).Message(), "This is no scene file.");
  const std::string bytes = EncodeContainer(EveryValue(nullptr));
  for (std::size_t length = 0; length < bytes.size(); ++length)
    EXPECT_FALSE(DecodeContainer(bytes.substr(0, length))) << length;
}

TEST(Columns, ComeBackWhateverTheRuns) {
  ColumnValues values;
  constexpr std::uint64_t kGreatest = std::numeric_limits<std::uint64_t>::max();
  for (std::uint64_t run : {1u, 2u, 127u, 128u, 129u, 130u, 260u, 1u}) {
    values.insert(values.end(), run, run);
    for (std::uint64_t i = 0; i < run; ++i) values.push_back(i * i * 0x123456789u);
    values.push_back(kGreatest);
  }
  std::string bytes;
  PutInts(bytes, values);
  PutWords(bytes, values);
  Budget budget(1 << 20);
  Cursor in(bytes, "TEST", budget);
  EXPECT_EQ(TakeInts(in, values.size()), values);
  EXPECT_EQ(TakeWords(in, values.size()), values);
  in.End();
}

// What comes of reading rows of a column: "refused", or how many bytes are left.
template <class Read>
std::string Outcome(std::string_view bytes, const Read& read) {
  Budget budget(1 << 20);
  Cursor in(bytes, "TEST", budget);
  try {
    read(in);
  } catch (const Damage&) {
    return "refused";
  }
  return std::to_string(in.Left());
}

TEST(Columns, ArePassedOverPickedAndCountedAsTheyAreRead) {
  std::uint64_t seed = 1;
  const auto next = [&seed](std::uint64_t end) {
    seed = seed * 6364136223846793005U + 1442695040888963407U;
    return (seed >> 33U) % end;
  };
  for (int round = 0; round < 300; ++round) {
    ColumnValues values;
    while (values.size() < static_cast<std::size_t>(round)) {
      const std::uint64_t value = (seed ^ seed >> 7U) >> next(64);
      values.insert(values.end(), 1 + (next(3) == 0 ? next(300) : 0), value);
    }
    std::string ints, words;
    PutInts(ints, values);
    PutWords(words, values);
    std::vector<std::size_t> wanted;
    for (std::size_t i = next(9); i < values.size(); i += 1 + next(20)) wanted.push_back(i);
    const auto compare = [&](const std::string& ofInts, const std::string& ofWords,
                             std::size_t rows) {
      ColumnValues all, picked;
      std::map<std::uint64_t, std::size_t> counted;
      const std::string read = Outcome(ofInts, [&](Cursor& in) { all = TakeInts(in, rows); });
      EXPECT_EQ(Outcome(ofInts, [&](Cursor& in) { SkipInts(in, rows); }), read);
      EXPECT_EQ(Outcome(ofInts, [&](Cursor& in) { picked = PickInts(in, rows, wanted); }), read);
      EXPECT_EQ(Outcome(ofInts, [&](Cursor& in) { counted = TallyInts(in, rows); }), read);
      EXPECT_EQ(Outcome(ofWords, [&](Cursor& in) { SkipWords(in, rows); }),
                Outcome(ofWords, [&](Cursor& in) { TakeWords(in, rows); }));
      if (read == "refused") return;
      std::map<std::uint64_t, std::size_t> meant;
      for (const std::uint64_t value : all) ++meant[value];
      EXPECT_EQ(counted, meant);
      for (std::size_t i = 0; i < picked.size(); ++i) EXPECT_EQ(picked[i], all[wanted[i]]);
    };
    compare(ints + "more than eight bytes", words + "more", values.size());
    compare(ints, words, values.size());
    compare(ints.substr(0, next(ints.size() + 1)), words.substr(0, next(words.size() + 1)),
            values.size());
    compare(ints, words, values.size() + 1);
    if (values.empty()) continue;
    std::erase(wanted, values.size() - 1);
    compare(ints, words, values.size() - 1);
    ints.back() = static_cast<char>(ints.back() | '\x80');
    compare(ints, words, values.size());
  }
}

TEST(Bytes, NumbersOfAnyLengthComeBack) {
  for (unsigned bit = 0; bit < 64; ++bit) {
    for (const std::uint64_t number : {std::uint64_t{1} << bit, (std::uint64_t{2} << bit) - 1}) {
      std::string bytes;
      PutVarint(bytes, number);
      EXPECT_EQ(bytes.size(), bit / 7 + 1);
      PutFixed64(bytes, number);
      Budget budget(1);
      Cursor in(bytes, "TEST", budget);
      EXPECT_EQ(in.Varint(), number);
      EXPECT_EQ(in.Fixed64(), number);
    }
  }
  const std::string nine(9, '\xFF');
  EXPECT_EQ(Outcome(nine + "\x01", [](Cursor& in) { EXPECT_EQ(in.Varint(), ~std::uint64_t{0}); }),
            "0");
  EXPECT_EQ(Outcome(nine + "\x02", [](Cursor& in) { in.Varint(); }), "refused");
  EXPECT_EQ(Outcome(nine + "\x81\x01", [](Cursor& in) { in.Varint(); }), "refused");
}

// The example of the format's page.
TEST(Columns, AreWrittenAsDocumented) {
  std::string bytes;
  PutInts(bytes, ColumnValues{100, 101, 102, 103, 7, 7});
  EXPECT_EQ(bytes, std::string("\x00\xC8\x01\x81\x02\x01\xBF\x01\x00", 9));
}

TEST(CodedContainer, IsWrittenAsDocumented) {
  ValueWriter values;
  values.texts.Row("another text");
  BaseContainer inner(7);
  inner.SetString(20000, "A");
  inner.SetLong(1, -5);
  BaseContainer outer;
  outer.SetContainer(0, inner);
  outer.SetContainer(1, inner);
  values.containers.Add(outer);
  values.containers.Number();
  EXPECT_EQ(
      values.containers.Contents(),
      std::string(
          "\x02\x01\x01\x02\x01\xC0\xB8\x02\xBD\xB8\x02\x01\x84\x02\xE5\x01\x00\x0E\x00\x02\x00\x09"
          "\x01\x01\x02\x01\x00\x02\x01\x88\x02\x00\x00\x00\x00\x02\x00\x02",
          38));
}

}  // namespace
}  // namespace tests
