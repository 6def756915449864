#include "host/BaseContainer.h"
#include "tests/support/ContainerMemory.h"

#include <gtest/gtest.h>

#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "engine/core/ContainerContents.h"
#include "host/DescID.h"

namespace {

using host::BaseContainer;
using host::BaseTime;
using host::GeData;
using host::LONG;
using host::Real;
using host::String;
using host::Vector;

std::string Keys(const BaseContainer& container) {
  std::ostringstream out;
  for (LONG i = 0; container.GetIndexId(i) != host::NOTOK; ++i)
    out << container.GetIndexId(i) << " ";
  return out.str();
}

BaseContainer OneOfEach() {
  BaseContainer all(9);
  all.SetData(0, GeData());
  all.SetLong(15, -7);
  all.SetReal(19, 2.75);
  all.SetTime(22, BaseTime(5, 25));
  all.SetVector(23, Vector(1, 2, 3));
  all.SetString(130, "text");
  all.SetFilename(131, "/a/b");
  BaseContainer nested(3);
  nested.SetLong(1, 1);
  all.SetContainer(132, nested);
  engine::SetLinkId(all, 133, 77);
  return all;
}

TEST(Container, StoresTypesUnderTheirNumbers) {
  const BaseContainer all = OneOfEach();
  for (LONG i = 0; i < all.GetCount(); ++i) {
    const LONG key = all.GetIndexId(i);
    EXPECT_EQ(all.GetType(key), key);
    EXPECT_EQ(all.GetData(key).GetType(), key);
    EXPECT_EQ(all.GetIndexData(i), all.GetData(key)) << key;
  }
  EXPECT_EQ(all.GetCount(), 9);
  EXPECT_EQ(all.GetType(5), host::DA_NIL);
  EXPECT_EQ(all.GetIndexData(-1).GetType(), host::DA_NIL);
}

TEST(Container, AnswersTheDefaultOfTheTypeWhereTheStoredOneDoesNotFit) {
  const BaseContainer all = OneOfEach();
  for (const LONG key : {0, 15, 19, 22, 23, 130, 131, 132, 133}) {
    SCOPED_TRACE(key);
    EXPECT_EQ(all.GetLong(key, 99), key == 15 ? -7 : key == 19 ? 2 : 0);
    EXPECT_EQ(all.GetReal(key, 99), key == 15 ? -7 : key == 19 ? 2.75 : 0);
    EXPECT_EQ(all.GetBool(key, true), key == 15 || key == 19);
    EXPECT_EQ(all.GetTime(key), key == 22 ? BaseTime(5, 25) : BaseTime());
    EXPECT_EQ(all.GetVector(key), key == 23 ? Vector(1, 2, 3) : Vector());
    EXPECT_EQ(all.GetString(key).ToUtf8(), key == 130 ? "text" : "");
    EXPECT_EQ(all.GetFilename(key).GetString().ToUtf8(), key == 131 ? "/a/b" : "");
    EXPECT_EQ(all.GetContainer(key).GetId(), key == 132 ? 3 : 0);
    EXPECT_EQ(all.GetContainerInstance(key) != nullptr, key == 132);
    EXPECT_EQ(engine::LinkOf(all, key), key == 133 ? 77U : 0U);
  }
  EXPECT_EQ(all.GetLong(5, 99), 99);
  EXPECT_EQ(all.GetReal(5, 1.5), 1.5);
  EXPECT_TRUE(all.GetBool(5, true));
}

TEST(Container, TruncatesRealsToTheRangeOfLong) {
  const Real huge = 1e300;
  const std::vector<std::pair<Real, LONG>> cases = {{2.9, 2},
                                                    {-2.9, -2},
                                                    {huge, std::numeric_limits<LONG>::max()},
                                                    {-huge, std::numeric_limits<LONG>::min()},
                                                    {std::numeric_limits<Real>::quiet_NaN(), 0}};
  for (const auto& [real, whole] : cases) EXPECT_EQ(GeData(real).GetLong(), whole) << real;
}

TEST(Container, KeepsOrderAndPosition) {
  BaseContainer container;
  for (const LONG key : {5, -1, 7, 2}) container.SetLong(key, key);
  container.SetString(7, "still third");
  EXPECT_EQ(Keys(container), "5 ");  // a key of -1 reads like the end
  EXPECT_EQ(container.FindIndex(7), 2);
  EXPECT_TRUE(container.RemoveData(-1));
  EXPECT_FALSE(container.RemoveData(-1));
  EXPECT_EQ(Keys(container), "5 7 2 ");
  EXPECT_EQ(container.FindIndex(7), 1);
  EXPECT_EQ(container.FindIndex(-1), host::NOTOK);
  container.SetLong(-1, 0);
  EXPECT_EQ(container.FindIndex(-1), 3);
}

// Short containers look keys up in an index from some size on, which has to follow growth, removal
// and copies. One container among the values gives them another form.
void FindScatteredKeys(LONG holder) {
  for (LONG size = 1; size <= 70; ++size) {
    const auto key = [](LONG i) {
      return static_cast<LONG>(static_cast<host::ULONG>(i) * 0x01000193U + 7U * (i % 3));
    };
    BaseContainer container;
    for (LONG i = 0; i < size; ++i) container.SetLong(key(i), i);
    if (holder < size) container.SetContainer(key(holder), BaseContainer());
    BaseContainer thinned = container;
    for (LONG i = 0; i < size; i += 2) EXPECT_TRUE(thinned.RemoveData(key(i)));
    BaseContainer split = thinned;
    split.SetId(size);
    for (LONG i = 0; i < 2 * size; ++i) {
      ASSERT_EQ(split.FindIndex(key(i)), thinned.FindIndex(key(i))) << size << " " << i;
      ASSERT_EQ(container.FindIndex(key(i)), i < size ? i : host::NOTOK) << size << " " << i;
      ASSERT_EQ(thinned.FindIndex(key(i)), i < size && i % 2 == 1 ? i / 2 : host::NOTOK)
          << size << " " << i;
    }
    thinned.FlushAll();
    thinned.SetReal(key(1), 1.5);
    ASSERT_EQ(thinned.FindIndex(key(0)), host::NOTOK);
    ASSERT_EQ(thinned.FindIndex(key(1)), 0);
  }
}

TEST(Container, FindsScatteredKeysAtEverySize) {
  FindScatteredKeys(70);
  FindScatteredKeys(1);
}

// Numbers are mostly written in the order of the entries, over and over; what they meet where the
// next one is expected may have gone or changed its type.
TEST(Container, NumbersGoWhereTheirKeyIs) {
  constexpr LONG kSizes[] = {1, 2, 3, 4, 5, 9, 20, 64, 65};
  for (const LONG size : kSizes) {
    SCOPED_TRACE(size);
    BaseContainer container;
    const auto fill = [&](LONG number) {
      for (LONG i = 0; i < size; ++i) container.SetLong(9 - i, number + i);
    };
    const auto expect = [&](LONG number, LONG from) {
      ASSERT_EQ(container.GetCount(), size - from);
      for (LONG i = from; i < size; ++i) EXPECT_EQ(container.GetLong(9 - i), number + i);
    };
    for (const LONG number : {100, 200, 300}) {
      fill(number);
      expect(number, 0);
    }
    container.SetLong(10 - size, 400 + size - 1);  // the last one, then from the second one on
    for (LONG i = 1; i < size; ++i) container.SetLong(9 - i, 400 + i);
    container.RemoveData(9);
    expect(400, 1);
    container.SetReal(9, 0.5);
    for (LONG i = 1; i < size; ++i) container.SetReal(9 - i, 0.5);
    container.SetLong(9, 7);
    EXPECT_EQ(container.GetType(9), host::DA_LONG);
    EXPECT_EQ(container.FindIndex(9), size - 1);
    const BaseContainer copy = container;
    for (LONG i = 0; i < size; ++i) {
      BaseContainer emptied;
      for (LONG key = 0; key < size; ++key) emptied.SetLong(key, key);
      emptied.FlushAll();
      emptied.SetLong(i, 8);
      EXPECT_EQ(Keys(emptied), std::to_string(i) + " ") << "what was there counts no more";
    }
    container.FlushAll();
    EXPECT_EQ(copy.GetCount(), size);
    container.SetData(0, GeData());
    EXPECT_EQ(Keys(container), "0 ");
  }
}

TEST(Container, NilUnderNoughtIsAnEntryOfAnEmptiedOne) {
  BaseContainer emptied(3);
  for (int round = 0; round < 2; ++round) {
    emptied.SetData(0, GeData());
    EXPECT_EQ(Keys(emptied), "0 ");
    round == 0 ? emptied.FlushAll() : void(emptied.RemoveData(0));
    EXPECT_EQ(emptied.GetCount(), 0);
  }
  emptied.SetData(0, GeData());
  EXPECT_EQ(emptied.GetCount(), 1);
}

TEST(Container, EmptyValuesAreEntries) {
  BaseContainer container;
  container.SetContainer(1, BaseContainer());
  container.SetString(2, String());
  engine::SetLinkId(container, 3, 0);
  container.SetData(4, GeData());
  EXPECT_EQ(Keys(container), "1 2 3 4 ");
  EXPECT_NE(container.GetContainerInstance(1), nullptr);
  EXPECT_NE(container, BaseContainer());
}

TEST(Container, OwnIdsCountInNoComparison) {
  BaseContainer a = OneOfEach();
  BaseContainer b = OneOfEach();
  b.SetId(1);
  b.GetContainerInstance(132)->SetId(2);
  EXPECT_EQ(a, b);
  EXPECT_FALSE(engine::Identical(a, b));
  b.GetContainerInstance(132)->SetLong(1, 2);
  EXPECT_NE(a, b);
  a.FlushAll();
  EXPECT_EQ(a.GetId(), 9);
  EXPECT_EQ(a, BaseContainer());
}

TEST(Container, ComparesKeysOrderTypesAndValues) {
  BaseContainer a;
  a.SetLong(1, 0);
  a.SetLong(2, 0);
  BaseContainer otherOrder;
  otherOrder.SetLong(2, 0);
  otherOrder.SetLong(1, 0);
  BaseContainer otherType;
  otherType.SetLong(1, 0);
  otherType.SetReal(2, 0);
  BaseContainer notANumber;
  notANumber.SetReal(1, std::numeric_limits<Real>::quiet_NaN());
  EXPECT_NE(a, otherOrder);
  EXPECT_NE(a, otherType);
  BaseContainer sameNotANumber;
  sameNotANumber.SetReal(1, std::numeric_limits<Real>::quiet_NaN());
  EXPECT_EQ(notANumber, sameNotANumber);
  for (const Vector& other : {Vector(1, 0, 0), Vector(0, 1, 0), Vector(0, 0, 1)})
    EXPECT_NE(GeData(other), GeData(Vector(0, 0, 0)));
  for (const BaseTime& other : {BaseTime(2, 25), BaseTime(1, 30)})
    EXPECT_NE(GeData(other), GeData(BaseTime(1, 25)));
}

TEST(Container, MergesInTheOrderOfTheSource) {
  BaseContainer target(1);
  target.SetLong(1, 10);
  target.SetLong(2, 20);
  BaseContainer source(2);
  source.SetLong(3, 3);
  source.SetLong(1, 1);
  target.MergeContainer(source);
  EXPECT_EQ(Keys(target), "1 2 3 ");
  EXPECT_EQ(target.GetLong(1), 1);
  EXPECT_EQ(target.GetId(), 1);
  target.MergeContainer(target);
  EXPECT_EQ(Keys(target), "1 2 3 ");
}

TEST(Container, MergesIntoAnEmptyOneWithoutTheOwnId) {
  BaseContainer source(2);
  source.SetLong(3, 3);
  for (const LONG id : {0, 5}) {
    BaseContainer owner;
    owner.SetContainer(1, BaseContainer(id));
    BaseContainer* target = owner.GetContainerInstance(1);
    target->MergeContainer(BaseContainer(9));
    EXPECT_EQ(target->GetId(), id);
    target->MergeContainer(source);
    target->SetLong(3, 4);
    EXPECT_EQ(owner.GetContainer(1).GetId(), id);
    EXPECT_EQ(owner.GetContainer(1).GetLong(3), 4);
  }
  EXPECT_EQ(source.GetId(), 2);
  EXPECT_EQ(source.GetLong(3), 3);
}

TEST(Container, ReachesTheFirstLevelOfAParameterPath) {
  BaseContainer container;
  EXPECT_TRUE(container.SetParameter(host::DescID(host::DescLevel(7), host::DescLevel(1)),
                                     GeData(LONG{3})));
  EXPECT_EQ(container.GetLong(7), 3);
  GeData value(LONG{5});
  EXPECT_FALSE(container.GetParameter(8, value));
  EXPECT_EQ(value.GetLong(), 5);
  EXPECT_TRUE(container.GetParameter(7, value));
  EXPECT_EQ(value.GetLong(), 3);
  EXPECT_FALSE(container.SetParameter(host::DescID(), value));
}

TEST(Container, WritingTheSameValueSplitsNothing) {
  BaseContainer original = OneOfEach();
  BaseContainer copy = original;
  for (LONG i = 0; i < original.GetCount(); ++i)
    copy.SetData(original.GetIndexId(i), OneOfEach().GetIndexData(i));
  copy.MergeContainer(OneOfEach());
  copy.SetId(9);
  copy.GetContainerInstance(132)->SetLong(1, 1);
  *copy.GetContainerInstance(132) = OneOfEach().GetContainer(132);
  EXPECT_EQ(engine::BodyOf(copy), engine::BodyOf(original));
  copy.GetContainerInstance(132)->SetId(4);
  EXPECT_NE(engine::BodyOf(copy), engine::BodyOf(original));
}

TEST(Container, GivesUpWhatItSharesAtItsEnd) {
  BaseContainer inner;
  inner.SetLong(1, 1);
  {
    BaseContainer outer;
    outer.SetContainer(2, inner);
    outer.SetString(3, "text");
  }
  const void* body = engine::BodyOf(inner);
  inner.SetLong(1, 2);
  EXPECT_EQ(engine::BodyOf(inner), body) << "written in place, since nobody else has it";
}

TEST(Container, HoldsItselfByValue) {
  BaseContainer container(1);
  container.SetLong(1, 1);
  container.SetContainer(2, container);
  EXPECT_EQ(container.GetCount(), 2);
  EXPECT_EQ(container.GetContainer(2).GetCount(), 1);
  container = container.GetContainer(2);
  EXPECT_EQ(Keys(container), "1 ");
}

TEST(Container, VisitsEntriesInOrder) {
  const BaseContainer all = OneOfEach();
  LONG position = 0;
  engine::ForEachEntry(all, [&](LONG key, const GeData& value) {
    EXPECT_EQ(key, all.GetIndexId(position));
    EXPECT_EQ(value, all.GetIndexData(position++));
  });
  EXPECT_EQ(position, all.GetCount());
}

BaseContainer Nested(int depth, LONG innermost) {
  BaseContainer container;
  container.SetLong(1, innermost);
  for (int i = 0; i < depth; ++i) {
    BaseContainer outer;
    outer.SetContainer(1, container);
    container = outer;
  }
  return container;
}

// A recursion of this depth would overflow the stack.
TEST(Container, NestsDeeperThanTheStack) {
  constexpr int kDepth = 300000;
  const BaseContainer a = Nested(kDepth, 1);
  const BaseContainer b = Nested(kDepth, 1);
  EXPECT_EQ(a, b);
  EXPECT_NE(a, Nested(kDepth, 2));
  EXPECT_GT(tests::MemoryOf(a), kDepth * sizeof(void*));
}

TEST(Container, EndsInstancesNestedDeeperThanTheStack) {
  constexpr int kDepth = 100000;
  BaseContainer top = Nested(kDepth, 1);
  const BaseContainer before = top;
  BaseContainer* instance = &top;
  for (int i = 0; i < kDepth; ++i) instance = instance->GetContainerInstance(1);
  instance->SetLong(1, 2);
  EXPECT_EQ(before, Nested(kDepth, 1));
  EXPECT_EQ(top, Nested(kDepth, 2));
}

// Two towers of containers that hold the container below twice: comparing along every way would
// never end.
TEST(Container, ComparesSharedLevelsOnce) {
  const auto tower = [] {
    BaseContainer level;
    for (int i = 0; i < 60; ++i) {
      BaseContainer next;
      next.SetContainer(1, level);
      next.SetContainer(2, level);
      level = next;
    }
    return level;
  };
  EXPECT_EQ(tower(), tower());
  EXPECT_LT(tests::MemoryOf(tower()), 60U * 200U);
}

}  // namespace
