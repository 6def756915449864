#include <gtest/gtest.h>

#include <random>
#include <utility>
#include <vector>

#include "engine/core/ContainerContents.h"
#include "engine/core/LongBody.h"
#include "host/BaseContainer.h"
#include "tests/support/ContainerMemory.h"
#include "tests/support/CountedMemory.h"

namespace {

using host::BaseContainer;
using host::LONG;

// A container beside the plain list that it should be equal to.
class Pair {
 public:
  void Set(LONG key, LONG value) {
    container_.SetLong(key, value);
    const std::size_t at = Find(key);
    if (at < plain_.size()) {
      plain_[at].second = value;
    } else {
      plain_.emplace_back(key, value);
    }
  }
  void Remove(LONG key) {
    const std::size_t at = Find(key);
    EXPECT_EQ(container_.RemoveData(key), at < plain_.size());
    if (at < plain_.size()) plain_.erase(plain_.begin() + static_cast<std::ptrdiff_t>(at));
  }
  LONG KeyAt(std::size_t i) const { return plain_[i % plain_.size()].first; }
  std::size_t Size() const { return plain_.size(); }
  const BaseContainer& Container() const { return container_; }

  void Check() const {
    ASSERT_EQ(container_.GetCount(), static_cast<LONG>(plain_.size()));
    for (std::size_t i = 0; i < plain_.size(); ++i) {
      const auto& [key, value] = plain_[i];
      ASSERT_EQ(container_.GetIndexId(static_cast<LONG>(i)), key) << i;
      ASSERT_EQ(container_.FindIndex(key), static_cast<LONG>(i)) << key;
      ASSERT_EQ(container_.GetLong(key, -1), value) << key;
      ASSERT_EQ(container_.GetIndexData(static_cast<LONG>(i)).GetLong(), value) << i;
    }
    ASSERT_EQ(container_.GetIndexId(static_cast<LONG>(plain_.size())), host::NOTOK);
  }

 private:
  std::size_t Find(LONG key) const {
    std::size_t at = 0;
    while (at < plain_.size() && plain_[at].first != key) ++at;
    return at;
  }
  BaseContainer container_;
  std::vector<std::pair<LONG, LONG>> plain_;
};

struct Shape {
  const char* name;
  LONG (*key)(LONG i);
};

class LongContainer : public testing::TestWithParam<Shape> {};

// Sizes around every change of form: the short ones, the first chunk, a full chunk, several.
TEST_P(LongContainer, AgreesWithAPlainListAtEverySize) {
  Pair pair;
  for (LONG i = 0; i < 1600; ++i) {
    pair.Set(GetParam().key(i), i);
    if (i < 40 || i % 64 == 0 || i % 512 < 2) pair.Check();
  }
  for (LONG i = 0; i < 1600; i += 3) pair.Set(GetParam().key(i), -i);
  pair.Check();
}

TEST_P(LongContainer, AgreesWithAPlainListWhileEntriesComeAndGo) {
  Pair pair;
  std::mt19937 random(1);
  LONG fresh = 0;
  for (int step = 0; step < 6000; ++step) {
    const bool growing = step % 3000 < 1800;
    const auto pick = random();
    if (pair.Size() == 0 || (growing ? pick % 4 != 0 : pick % 4 == 0)) {
      pair.Set(GetParam().key(fresh++), step);
    } else if (pick % 8 < 6) {
      pair.Remove(pair.KeyAt(step % 500 < 250 ? 0 : random()));
    } else {
      pair.Remove(GetParam().key(fresh + 7));
    }
    if (step % 250 == 0) pair.Check();
  }
  while (pair.Size() > 0) pair.Remove(pair.KeyAt(random()));
  for (const LONG key : {5, 7, 3}) {
    pair.Set(key, key);
    pair.Check();
  }
}

TEST_P(LongContainer, CopiesStayWhatTheyWere) {
  BaseContainer container;
  for (LONG i = 0; i < 3000; ++i) container.SetLong(GetParam().key(i), i);
  const BaseContainer before = container;
  container.SetLong(GetParam().key(700), -1);
  container.RemoveData(GetParam().key(10));
  container.SetLong(GetParam().key(3000), 3000);
  EXPECT_EQ(before.GetCount(), 3000);
  for (LONG i = 0; i < 3000; ++i) ASSERT_EQ(before.GetLong(GetParam().key(i), -5), i);
  EXPECT_EQ(before.FindIndex(GetParam().key(3000)), host::NOTOK);
  EXPECT_NE(before, container);
  container.RemoveData(GetParam().key(3000));
  EXPECT_EQ(container.FindIndex(GetParam().key(11)), 10);
  // A key that changes its place in one must be found at its own place in the other.
  container.SetLong(GetParam().key(10), 10);
  EXPECT_EQ(container.FindIndex(GetParam().key(10)), 2999);
  EXPECT_EQ(before.FindIndex(GetParam().key(10)), 10);
}

// Containers with equal entries compare equal however the entries are spread over chunks.
TEST_P(LongContainer, ComparesEntriesNotChunks) {
  BaseContainer thinned;
  BaseContainer fresh;
  for (LONG i = 0; i < 4000; ++i) thinned.SetLong(GetParam().key(i), i);
  for (LONG i = 0; i < 4000; ++i) {
    if (i % 3 == 0) thinned.RemoveData(GetParam().key(i));
    if (i % 3 != 0) fresh.SetLong(GetParam().key(i), i);
  }
  EXPECT_EQ(thinned, fresh);
  fresh.SetLong(GetParam().key(3998), 0);
  EXPECT_NE(thinned, fresh);
}

// Quadratic work at this size would take minutes.
TEST_P(LongContainer, FillsMergesAndEmptiesWithoutQuadraticWork) {
  constexpr LONG kMany = 200000;
  BaseContainer container;
  for (LONG i = 0; i < kMany; ++i) container.SetLong(GetParam().key(i), i);
  BaseContainer merged;
  merged.SetLong(1 << 30, 1);
  merged.MergeContainer(container);
  EXPECT_EQ(merged.GetCount(), kMany + 1);
  for (LONG i = 0; i < kMany; ++i) ASSERT_TRUE(container.RemoveData(container.GetIndexId(0)));
  EXPECT_EQ(container, BaseContainer());
}

TEST_P(LongContainer, ACopySplitsByChunks) {
  BaseContainer container;
  for (LONG i = 0; i < 100000; ++i) container.SetLong(GetParam().key(i), i);
  BaseContainer both;
  both.SetContainer(1, container);
  container.SetLong(GetParam().key(50000), -1);
  const std::size_t alone = tests::MemoryOf(container);
  both.SetContainer(2, container);
  EXPECT_LT(tests::MemoryOf(both), alone + alone / 20);
}

INSTANTIATE_TEST_SUITE_P(
    Keys, LongContainer,
    testing::Values(Shape{"Dense", [](LONG i) { return i; }},
                    Shape{"Ascending", [](LONG i) { return 1000 + 3 * i; }},
                    Shape{"Descending", [](LONG i) { return -i; }},
                    Shape{"LateDisorder", [](LONG i) { return i < 700 ? i : 2000000 - i; }},
                    Shape{"Scattered", [](LONG i) { return static_cast<LONG>(i * 2654435761U); }}),
    [](const auto& shape) { return std::string(shape.param.name); });

// A container that keeps its size while every key is new must not collect the keys that left.
TEST(LongContainerMemory, ForgetsKeysThatLeft) {
  for (const LONG leaving : {0, 1999}) {
    BaseContainer container;
    for (LONG i = 2000; i > 0; --i) container.SetLong(i, i);
    const std::size_t before = tests::MemoryOf(container);
    for (LONG i = 0; i < 100000; ++i) {
      container.RemoveData(container.GetIndexId(leaving));
      container.SetLong(10000 + i, i);
    }
    EXPECT_LT(tests::MemoryOf(container), 4 * before) << leaving;
  }
}

BaseContainer RecordOf(engine::NodeId element, LONG value) {
  BaseContainer record;
  engine::SetLinkId(record, 30000, element);
  record.SetLong(30001, value);
  return record;
}

// The chunks that know the range of their links. Of those, each record has one, in ascending order.
std::size_t ChunksWithRange(const BaseContainer& container) {
  const engine::ContainerBody* body = engine::ContainerAccess::Body(container);
  std::size_t known = 0;
  for (const engine::ChunkPlace& place : engine::AsLong(body)->chunks) {
    const engine::Chunk& chunk = *place.chunk;
    if (!chunk.links.IsKnown()) continue;
    ++known;
    std::uint64_t last = 0;
    for (const engine::Entry& entry : chunk.All()) {
      const auto link = engine::RecordLink::Of(entry.Get());
      EXPECT_EQ(link.key, chunk.linkKey);
      EXPECT_GT(link.target, last);
      EXPECT_TRUE(link.target >= chunk.links.least && link.target <= chunk.links.greatest);
      last = link.target;
    }
  }
  return known;
}

// One write into a list of records, and what it leaves known of the ranges of its four chunks.
struct RangeWrite {
  const char* name;
  void (*write)(BaseContainer& list);
  std::size_t known;
};
const RangeWrite kRangeWrites[] = {
    {"the same record", [](BaseContainer& list) { list.SetContainer(7, RecordOf(1070, 0)); }, 4},
    {"another value", [](BaseContainer& list) { list.SetContainer(7, RecordOf(1070, 1)); }, 4},
    {"another element", [](BaseContainer& list) { list.SetContainer(7, RecordOf(5, 0)); }, 3},
    {"no record", [](BaseContainer& list) { list.SetLong(7, 7); }, 3},
    {"one without entries", [](BaseContainer& list) { list.SetContainer(7, {}); }, 3},
    {"one taken out", [](BaseContainer& list) { list.RemoveData(7); }, 4},
    {"the next", [](BaseContainer& list) { list.SetContainer(2000, RecordOf(99999, 0)); }, 4},
    {"an earlier one", [](BaseContainer& list) { list.SetContainer(2000, RecordOf(5, 0)); }, 3},
    {"no element", [](BaseContainer& list) { list.SetContainer(2000, RecordOf(0, 0)); }, 3},
    {"in place",
     [](BaseContainer& list) { engine::SetLinkId(*list.GetContainerInstance(600), 30000, 5); }, 3},
    {"in place, deeper",
     [](BaseContainer& list) {
       BaseContainer inner;
       inner.SetContainer(1, RecordOf(3, 0));
       list.SetContainer(600, inner);
       engine::SetLinkId(*list.GetContainerInstance(600)->GetContainerInstance(1), 30000, 5);
     },
     3},
};

TEST(LongContainerLinks, RangesAreKnownWhereTheyHold) {
  BaseContainer list;
  for (LONG i = 0; i < 2000; ++i)
    list.SetContainer(i, RecordOf(static_cast<engine::NodeId>(1000 + 10 * i), 0));
  ASSERT_EQ(ChunksWithRange(list), 4u);
  for (const RangeWrite& row : kRangeWrites) {
    SCOPED_TRACE(row.name);
    for (const bool shared : {true, false}) {
      BaseContainer copy = list;
      if (!shared) copy.SetContainer(1999, RecordOf(20990, 1));
      row.write(copy);
      EXPECT_EQ(ChunksWithRange(copy), row.known);
      EXPECT_EQ(ChunksWithRange(list), 4u);
    }
  }
}

// Values that hold memory come into long containers and go out of them in every way.
TEST(LongContainerMemory, IsGivenBackWithTheValues) {
  const auto value = [](LONG i) {
    const std::string text = std::to_string(i);
    switch (i % 4) {
      case 0:
        return host::GeData(host::Vector(i, 1, 2));
      case 1:
        return host::GeData(text.c_str());
      case 2:
        return host::GeData(RecordOf(7, i));
      default:
        return host::GeData(host::BaseTime(i, 25));
    }
  };
  const auto work = [&](LONG step) {
    BaseContainer container;
    for (LONG i = 0; i < 700; ++i) container.SetData(step * i, value(i));
    const BaseContainer copy = container;
    for (LONG i = 0; i < 700; i += 2) container.SetData(step * i, value(i + 2));
    for (LONG i = 0; i < 700; i += 3) EXPECT_TRUE(container.RemoveData(step * i));
    BaseContainer other = copy;
    other.SetLong(step, 1);
    other.FlushAll();
    other.MergeContainer(container);
    container.FlushAll();
    container.SetLong(1, 1);
    other.GetContainerInstance(step * 4)->SetLong(1, 2);
    for (LONG i = 0; i < 700; ++i) other.RemoveData(step * i);
    EXPECT_EQ(other.GetCount(), 0);
    EXPECT_EQ(copy.GetCount(), 700);
  };
  for (const LONG step : {1, 3, -1}) {
    work(step);  // what is kept for the next one is there from now on
    const long before = tests::blocksHeld;
    work(step);
    EXPECT_EQ(tests::blocksHeld, before) << step;
  }
}

TEST(LongContainerMemory, RecordingAgainUnchangedAddsNothing) {
  const auto record = [](LONG i) {
    BaseContainer entry(i);
    engine::SetLinkId(entry, 30000, 1000 + i);
    for (LONG key = 30001; key < 30004; ++key) entry.SetLong(key, i % 3);
    return entry;
  };
  BaseContainer store;
  for (LONG i = 0; i < 5000; ++i) store.SetContainer(i, record(i));
  BaseContainer both;
  both.SetContainer(1, store);
  const std::size_t before = tests::MemoryOf(both);
  for (LONG i = 0; i < 5000; ++i) store.SetContainer(i, record(i));
  both.SetContainer(1, store);
  EXPECT_EQ(tests::MemoryOf(both), before);
  EXPECT_EQ(engine::BodyOf(both.GetContainer(1)), engine::BodyOf(store));
}

}  // namespace
