// The machinery below the scene: memory of nodes and the table of identities, each beside a plain
// model.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <map>
#include <set>
#include <unordered_map>

#include "engine/scene/NodeIds.h"
#include "engine/scene/NodePool.h"
#include "engine/scene/NodeTable.h"
#include "engine/scene/SeededIds.h"

namespace {

class Random {
 public:
  explicit Random(unsigned seed) : seed_(seed) {}
  unsigned operator()(unsigned bound) {
    return (seed_ = seed_ * 1664525u + 1013904223u) / 65536u % bound;
  }

 private:
  unsigned seed_;
};

TEST(NodePool, BlocksNeverOverlapWhateverTheOrder) {
  constexpr std::size_t kBytes = 100;
  engine::NodePool pool(kBytes);
  Random random(3);
  std::map<unsigned char*, unsigned char> live;
  for (int step = 0; step < 30000; ++step) {
    // Long phases of growing and of shrinking fill and empty whole slabs.
    const bool grow = (step / 5000) % 2 == 0;
    if (live.empty() || random(10) < (grow ? 8u : 3u)) {
      auto* block = static_cast<unsigned char*>(pool.Take());
      ASSERT_EQ(reinterpret_cast<std::uintptr_t>(block) % 64, 0u);
      const auto mark = static_cast<unsigned char>(random(256));
      std::memset(block, mark, kBytes);
      ASSERT_TRUE(live.emplace(block, mark).second);
    } else {
      const auto it = std::next(live.begin(), random(static_cast<unsigned>(live.size())));
      for (std::size_t i = 0; i < kBytes; ++i) ASSERT_EQ(it->first[i], it->second) << step;
      pool.Give(it->first);
      live.erase(it);
    }
  }
  for (const auto& [block, mark] : live) pool.Give(block);
}

#if !defined(__SANITIZE_ADDRESS__)
TEST(NodePool, BlocksTakenInSequenceLieInSequence) {
  engine::NodePool pool(192);
  std::vector<unsigned char*> blocks;
  for (int i = 0; i < 300; ++i) blocks.push_back(static_cast<unsigned char*>(pool.Take()));
  for (std::size_t i = 1; i < blocks.size(); ++i) EXPECT_EQ(blocks[i] - blocks[i - 1], 192);
  pool.Give(blocks[7]);
  EXPECT_EQ(pool.Take(), blocks[7]) << "the next is one that was given back";
  for (unsigned char* block : blocks) pool.Give(block);
  EXPECT_EQ(pool.Take(), blocks.front()) << "an emptied slab starts over";
  pool.Give(blocks.front());
}
#endif

TEST(NodeTable, AgreesWithAMap) {
  engine::NodeTable table;
  std::unordered_map<engine::NodeId, host::BaseList2D*> model;
  Random random(11);
  // Pages that share a place in the near table, crowded and sparse ones.
  const auto anyId = [&] {
    return (engine::NodeId{random(6)} * 128 << 12) + random(random(2) ? 40 : 4096);
  };
  for (int step = 0; step < 60000; ++step) {
    const engine::NodeId id = anyId() + 1;
    auto* node = reinterpret_cast<host::BaseList2D*>(static_cast<std::uintptr_t>(step + 1) * 8);
    const bool shrink = (step / 10000) % 2 == 1;
    if (random(10) < (shrink ? 2u : 7u)) {
      ASSERT_EQ(table.Add(id, node), model.emplace(id, node).second) << step;
    } else if (!model.empty()) {
      const engine::NodeId gone = shrink ? model.begin()->first : id;
      if (model.erase(gone) > 0) table.Remove(gone);
    }
    const engine::NodeId asked = anyId() + 1;
    const auto found = model.find(asked);
    ASSERT_EQ(table.Find(asked), found == model.end() ? nullptr : found->second) << step;
  }
}

TEST(NodeIds, GiveUpARangeThatAFileUses) {
  engine::NodeIds ids;
  const engine::NodeId first = ids.Next();
  EXPECT_EQ(first % engine::NodeIds::kRange, 0u);
  EXPECT_EQ(ids.Next(), first + 1);
  ids.Seen(first);
  EXPECT_EQ(ids.Next(), first + 2) << "an identity given before changes nothing";
  ids.Seen(first + 50 * engine::NodeIds::kRange);
  EXPECT_EQ(ids.Next(), first + 3) << "nor does one of another range";
  ids.Seen(first + 100);
  const engine::NodeId other = ids.Next();
  EXPECT_NE(other / engine::NodeIds::kRange, first / engine::NodeIds::kRange);
  EXPECT_EQ(ids.Next(), other + 1);
  // All of a range, and the one behind it.
  for (engine::NodeId i = 2; i < engine::NodeIds::kRange; ++i) ids.Next();
  const engine::NodeId next = ids.Next();
  EXPECT_EQ(next % engine::NodeIds::kRange, 0u);
}

// Where chance brings the same ranges again, as a seed does, those that are in use are left out.
TEST(NodeIds, NoRangeIsGivenTwice) {
  constexpr std::uint64_t kSeed = 7;
  const auto range = [](engine::NodeIds& ids) { return ids.Next() / engine::NodeIds::kRange; };
  engine::NodeIds ids[3];
  engine::NodeId drawn[2];
  {
    const engine::SeededIds seeded(kSeed);
    for (engine::NodeId& one : drawn) {
      one = range(ids[0]);
      ids[0].Seen(one * engine::NodeIds::kRange + 1000);
    }
    EXPECT_NE(drawn[0], drawn[1]);
  }
  {
    const engine::SeededIds seeded(kSeed);
    EXPECT_EQ(range(ids[1]), drawn[0]) << "the same in another process";
  }
  {
    const engine::SeededIds seeded(kSeed);
    ids[2].Seen(drawn[0] * engine::NodeIds::kRange + 5);
    EXPECT_EQ(range(ids[2]), drawn[1]) << "a file has brought the first one";
  }
  // A scope's identities are in ranges of their own, before, between and behind inner ones.
  std::set<engine::NodeId> ranges = {range(engine::NodeIds::Instance())};
  {
    const engine::SeededIds outer(1234);
    ranges.insert(range(engine::NodeIds::Instance()));
    {
      const engine::SeededIds inner(5678);
      ranges.insert(range(engine::NodeIds::Instance()));
    }
    ranges.insert(range(engine::NodeIds::Instance()));
  }
  ranges.insert(range(engine::NodeIds::Instance()));
  EXPECT_EQ(ranges.size(), 5u);
  // Identities are positive, also for whoever takes them for signed numbers.
  for (std::uint64_t seed = 0; seed < 100; ++seed) {
    const engine::SeededIds seeded(seed);
    engine::NodeIds fresh;
    EXPECT_LT(fresh.Next() - 1, engine::NodeId{1} << 63);
    engine::NodeIds chance;
    EXPECT_LT(chance.Next() - 1, engine::NodeId{1} << 63);
  }
}

}  // namespace
