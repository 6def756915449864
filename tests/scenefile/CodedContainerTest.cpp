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
