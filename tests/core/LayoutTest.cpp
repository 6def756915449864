#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "engine/core/ContainerBody.h"
#include "host/BaseContainer.h"
#include "host/Filename.h"
#include "tests/support/ContainerMemory.h"
#include "tests/support/CountedOperators.h"

namespace {

using host::BaseContainer;
using host::GeData;
using host::LONG;
using host::String;

BaseContainer Numbered(LONG count) {
  BaseContainer container;
  for (LONG i = 0; i < count; ++i) container.SetLong(5000 + 7 * i, i);
  return container;
}

bool AreLaidOutAlike(const BaseContainer& a, const BaseContainer& b) {
  const engine::ContainerBody* left = engine::ContainerAccess::Body(a);
  const engine::ContainerBody* right = engine::ContainerAccess::Body(b);
  return left->IsLaidOut() && right->IsLaidOut() && &left->Keys() == &right->Keys();
}

// Containers made, copied and changed in the same way hold their keys once.
TEST(Layout, WhatIsDoneAlikeSharesItsKeys) {
  const struct {
    const char* what;
    std::function<void(BaseContainer&)> change;
  } rows[] = {
      {"made alike", [](BaseContainer&) {}},
      {"other values", [](BaseContainer& one) { one.SetLong(5007, -1); }},
      {"a key more", [](BaseContainer& one) { one.SetLong(1, 1); }},
      {"a text more", [](BaseContainer& one) { one.SetString(1, String("text")); }},
      {"three more",
       [](BaseContainer& one) {
         for (LONG i : {1, 3, 2}) one.SetReal(i, 0.5);
       }},
      {"another type", [](BaseContainer& one) { one.SetReal(5014, 1.5); }},
      {"another type at first", [](BaseContainer& one) { one.SetReal(5000, 1.5); }},
      {"without the last", [](BaseContainer& one) { one.RemoveData(5000 + 7 * 19); }},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    std::vector<BaseContainer> all(100, Numbered(20));
    for (BaseContainer& one : all) row.change(one);
    EXPECT_TRUE(AreLaidOutAlike(all[1], all[99]));
    EXPECT_EQ(all[1], all[99]);
  }
  // A block of its own for each, as all keys would take.
  BaseContainer list;
  for (LONG i = 0; i < 100; ++i) {
    BaseContainer one = Numbered(50);
    one.SetLong(5000, -i);
    list.SetContainer(i, one);
  }
  EXPECT_LT(tests::MemoryOf(list), 100U * 50U * 10U);
}

// A container, and beside it what it should hold.
struct Checked {
  BaseContainer container;
  std::vector<std::pair<LONG, GeData>> plain;

  void Set(LONG key, const GeData& value) {
    container.SetData(key, value);
    for (auto& [there, held] : plain) {
      if (there == key) {
        held = value;
        return;
      }
    }
    plain.emplace_back(key, value);
  }
  void Remove(LONG key) {
    container.RemoveData(key);
    std::erase_if(plain, [&](const auto& entry) { return entry.first == key; });
  }
  void Clear() {
    container.FlushAll();
    plain.clear();
  }
  void Check() const {
    ASSERT_EQ(container.GetCount(), static_cast<LONG>(plain.size()));
    BaseContainer fresh;
    for (std::size_t i = 0; i < plain.size(); ++i) {
      const auto& [key, value] = plain[i];
      ASSERT_EQ(container.GetIndexId(static_cast<LONG>(i)), key) << i;
      ASSERT_EQ(container.FindIndex(key), static_cast<LONG>(i)) << key;
      ASSERT_EQ(container.GetData(key), value) << key;
      ASSERT_EQ(container.GetType(key), value.GetType()) << key;
      fresh.SetData(key, value);
    }
    ASSERT_EQ(container.FindIndex(1'000'000), host::NOTOK);
    ASSERT_EQ(container, fresh);
  }
};

GeData AnyValue(std::mt19937& random) {
  const auto number = static_cast<LONG>(random() % 3);
  switch (random() % 16) {
    case 0:
      return GeData(0.25 * number);
    case 1:
      return GeData(String(std::to_string(number).c_str()));
    case 2:
      return random() % 16 == 0 ? GeData(Numbered(number)) : GeData();
    case 3:
      return GeData(host::Vector(number == 1, number == 2, random() % 2 == 0));
    case 4:
      return GeData(host::BaseTime(number, 25));
    case 5:
      return GeData(host::Filename(String(std::to_string(number).c_str())));
    default:
      return GeData(number);
  }
}

void ChangeAtRandom(std::vector<Checked>& all, std::mt19937& random) {
  Checked& one = all[random() % all.size()];
  const auto key = static_cast<LONG>(100 + 3 * (random() % 70));
  switch (random() % 32) {
    case 0:
      one = all[random() % all.size()];
      break;
    case 1:
      one.Clear();
      break;
    case 2:
    case 3:
    case 4:
      one.Remove(one.plain.empty() ? key : one.plain[random() % one.plain.size()].first);
      break;
    default: {
      // Mostly the keys in one order, so that containers go on alike and part.
      const auto next = static_cast<LONG>(100 + 3 * one.plain.size());
      one.Set(random() % 8 == 0 ? key : next, AnyValue(random));
    }
  }
}

// However containers share keys, and part from one another, each holds what was put into it.
void TryAtRandom(unsigned seed) {
  std::mt19937 random(seed);
  std::vector<Checked> all(6);
  for (int step = 0; step < 12000; ++step) {
    ChangeAtRandom(all, random);
    if (step % 16 == 0) {
      for (const Checked& one : all) ASSERT_NO_FATAL_FAILURE(one.Check()) << step;
    }
  }
}

TEST(Layout, HoldsWhatAPlainListHolds) { TryAtRandom(1); }

TEST(Layout, ContainersGiveAllTheirMemoryBack) {
  TryAtRandom(2);  // what is kept for the next one is there from now on
  const long before = tests::blocksHeld;
  TryAtRandom(2);
  EXPECT_EQ(tests::blocksHeld, before);
}

// Keys that were shared on one thread are never changed by another one.
TEST(Layout, ThreadsShareKeysWithoutSeeingEachOther) {
  const BaseContainer shared = Numbered(20);
  std::vector<BaseContainer> results(4);
  std::vector<std::thread> threads;
  for (LONG t = 0; t < 4; ++t) {
    threads.emplace_back([&shared, &result = results[static_cast<std::size_t>(t)], t] {
      for (LONG round = 0; round < 2000; ++round) {
        result = shared;
        for (LONG i = 0; i < 4; ++i) result.SetLong(t + 2 * i, round);
        result.SetReal(5007, 0.5);
        result.RemoveData(5014);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(shared, Numbered(20));
  for (LONG t = 0; t < 4; ++t) {
    const BaseContainer& result = results[static_cast<std::size_t>(t)];
    EXPECT_EQ(result.GetCount(), 23);
    for (LONG i = 0; i < 4; ++i) EXPECT_EQ(result.FindIndex(t + 2 * i), 19 + i);
    EXPECT_EQ(result.GetReal(5007), 0.5);
  }
  // Containers that a thread leaves behind may be changed by other threads.
  results[0].SetLong(9, 9);
  EXPECT_EQ(results[0].FindIndex(9), 23);
}

}  // namespace
