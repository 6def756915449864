// Instances and copies: the law of writing in place, by cases and by random operations beside plain
// deep copies.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <future>
#include <map>
#include <random>
#include <sstream>
#include <utility>
#include <vector>

#include "engine/core/ContainerContents.h"
#include "host/BaseContainer.h"
#include "tests/support/CountedMemory.h"

namespace {

using host::BaseContainer;
using host::GeData;
using host::LONG;

// "id{key=value key=id{...}}"
std::string Text(const BaseContainer& container) {
  std::ostringstream out;
  out << container.GetId() << "{";
  for (LONG i = 0; i < container.GetCount(); ++i) {
    const LONG key = container.GetIndexId(i);
    out << (i ? " " : "") << key << "=";
    if (container.GetType(key) == host::DA_CONTAINER) {
      out << Text(container.GetContainer(key));
    } else {
      out << container.GetLong(key);
    }
  }
  out << "}";
  return out.str();
}

// {1=1 2={1={1={1=1}}}}
BaseContainer FourLevels() {
  BaseContainer container;
  container.SetLong(1, 1);
  for (int i = 0; i < 2; ++i) {
    BaseContainer outer;
    outer.SetContainer(1, container);
    container = outer;
  }
  BaseContainer top;
  top.SetLong(1, 1);
  top.SetContainer(2, container);
  return top;
}

BaseContainer* ThirdLevel(BaseContainer& top) {
  return top.GetContainerInstance(2)->GetContainerInstance(1)->GetContainerInstance(1);
}

TEST(ContainerInstance, WritesReachTheirContainerAndNoCopy) {
  BaseContainer top = FourLevels();
  const BaseContainer before = top;
  BaseContainer* third = ThirdLevel(top);
  third->SetLong(1, 2);
  const BaseContainer between = top;
  const BaseContainer betweenThird = *third;
  third->SetLong(1, 3);
  EXPECT_EQ(Text(before), "0{1=1 2=0{1=0{1=0{1=1}}}}");
  EXPECT_EQ(Text(between), "0{1=1 2=0{1=0{1=0{1=2}}}}");
  EXPECT_EQ(Text(top), "0{1=1 2=0{1=0{1=0{1=3}}}}");
  EXPECT_EQ(Text(betweenThird), "0{1=2}");
}

TEST(ContainerInstance, EveryWayOfWritingGoesThrough) {
  using Write = std::function<void(BaseContainer&)>;
  const std::map<std::string, Write> cases = {
      {"0{1=7}", [](BaseContainer& c) { c.SetLong(1, 7); }},
      {"0{1=1 5=0{}}", [](BaseContainer& c) { c.SetContainer(5, BaseContainer()); }},
      {"4{1=1}", [](BaseContainer& c) { c.SetId(4); }},
      {"0{}", [](BaseContainer& c) { c.FlushAll(); }},
      {"0{9=9}", [](BaseContainer& c) { c.RemoveData(1), c.SetData(9, GeData(LONG{9})); }},
      {"6{}", [](BaseContainer& c) { c = BaseContainer(6); }},
      {"0{1=0{1=1}}", [](BaseContainer& c) { c.SetContainer(1, c); }},
      {"8{}", [](BaseContainer& c) { c.FlushAll(), c.SetId(8); }},
  };
  for (const auto& [expected, write] : cases) {
    BaseContainer top = FourLevels();
    const BaseContainer before = top;
    BaseContainer* third = ThirdLevel(top);
    write(*third);
    EXPECT_EQ(Text(*third), expected);
    EXPECT_EQ(Text(top), "0{1=1 2=0{1=0{1=" + expected + "}}}");
    EXPECT_EQ(Text(before), Text(FourLevels()));
    EXPECT_EQ(ThirdLevel(top), third);
  }
}

TEST(ContainerInstance, StaysWhileSiblingsComeAndGo) {
  BaseContainer top = FourLevels();
  BaseContainer* second = top.GetContainerInstance(2);
  for (LONG key = 3; key < 3000; ++key) top.SetLong(key, key);
  second->SetLong(7, 7);
  for (LONG key = 3; key < 3000; ++key) top.RemoveData(key);
  EXPECT_TRUE(top.RemoveData(1));
  EXPECT_EQ(top.GetContainerInstance(2), second);
  EXPECT_EQ(Text(top), "0{2=0{1=0{1=0{1=1}} 7=7}}");
}

TEST(ContainerInstance, StaysWhenItsEntryIsSetToWhatItIs) {
  BaseContainer top = FourLevels();
  BaseContainer* third = ThirdLevel(top);
  top.SetContainer(2, FourLevels().GetContainer(2));
  third->SetLong(1, 5);
  EXPECT_EQ(Text(top), "0{1=1 2=0{1=0{1=0{1=5}}}}");
}

TEST(ContainerInstance, IsReplacedWithItsEntry) {
  BaseContainer top = FourLevels();
  ThirdLevel(top)->SetLong(1, 5);
  // The new value is read from an instance that ends by being replaced.
  top.SetContainer(2, *ThirdLevel(top));
  EXPECT_EQ(Text(top), "0{1=1 2=0{1=5}}");
  EXPECT_EQ(Text(*top.GetContainerInstance(2)), "0{1=5}");
  top = *top.GetContainerInstance(2);
  EXPECT_EQ(Text(top), "0{1=5}");
  EXPECT_EQ(top.GetContainerInstance(1), nullptr);
}

TEST(ContainerInstance, MovesWithTheContainerThatOwnsIt) {
  BaseContainer top = FourLevels();
  BaseContainer* third = ThirdLevel(top);
  BaseContainer moved = std::move(top);
  third->SetLong(1, 9);
  EXPECT_EQ(Text(moved), "0{1=1 2=0{1=0{1=0{1=9}}}}");
  // Moving from an instance copies: its owner keeps the entry.
  const BaseContainer taken = std::move(*third);
  EXPECT_EQ(Text(taken), "0{1=9}");
  EXPECT_EQ(Text(moved), "0{1=1 2=0{1=0{1=0{1=9}}}}");
  BaseContainer other;
  other = std::move(moved);
  EXPECT_EQ(Text(other), "0{1=1 2=0{1=0{1=0{1=9}}}}");
}

// A picture is computed from copies while the artist goes on.
TEST(ContainerInstance, AnotherThreadReadsACopyMeanwhile) {
  BaseContainer top;
  for (LONG i = 0; i < 2000; ++i) top.SetContainer(i * 7919 % 2003, BaseContainer(i));
  const auto sumOf = [](BaseContainer container) {
    LONG sum = 0;
    for (LONG i = 0; i < container.GetCount(); ++i) {
      const BaseContainer record = container.GetContainer(container.GetIndexId(i));
      sum += record.GetId() + record.GetLong(1);
    }
    return sum;
  };
  for (LONG round = 0; round < 20; ++round) {
    const LONG expected = sumOf(top);
    auto sum = std::async(std::launch::async, sumOf, top);
    for (LONG i = 0; i < 2000; i += 3)
      top.GetContainerInstance(top.GetIndexId(i))->SetLong(1, round);
    top.RemoveData(top.GetIndexId(round));
    top.SetContainer(5000 + round, BaseContainer(round));
    EXPECT_EQ(sum.get(), expected);
  }
}

// A container as plain nested lists, copied deeply.
struct Plain {
  struct Cell {
    LONG number = 0;
    std::vector<Plain> nested;  // one or none
  };
  struct Place {
    LONG key;
    Cell cell;
  };
  LONG id = 0;
  std::vector<Place> cells;

  Cell* Find(LONG key) {
    for (auto& [present, cell] : cells) {
      if (present == key) return &cell;
    }
    return nullptr;
  }
  void Set(LONG key, const Cell& cell) {
    if (Cell* present = Find(key)) {
      *present = Cell(cell);
    } else {
      cells.push_back({key, cell});
    }
  }
  bool Remove(LONG key) {
    return std::erase_if(cells, [&](const Place& place) { return place.key == key; }) > 0;
  }
  std::size_t Size() const {
    std::size_t size = 1;
    for (const auto& [key, cell] : cells) size += cell.nested.empty() ? 1 : cell.nested[0].Size();
    return size;
  }
};

std::string Text(const Plain& plain) {
  std::ostringstream out;
  out << plain.id << "{";
  for (const auto& [key, cell] : plain.cells) {
    out << (&cell == &plain.cells[0].cell ? "" : " ") << key << "=";
    if (cell.nested.empty()) {
      out << cell.number;
    } else {
      out << Text(cell.nested[0]);
    }
  }
  out << "}";
  return out.str();
}

// A few containers and the instances they handed out, beside their plain doubles.
class Workshop {
 public:
  explicit Workshop(unsigned seed, LONG keys) : random_(seed), keys_(keys) {}

  void Step() {
    const std::size_t at = Pick(handles_.size() + kTops);
    const Path path = at < kTops ? Path{at, {}} : handles_[at - kTops].path;
    BaseContainer& container = at < kTops ? tops_[at] : *handles_[at - kTops].instance;
    const auto key = static_cast<LONG>(Pick(static_cast<std::size_t>(keys_)));
    const std::size_t act = Pick(12);
    if (act < 2) return SetLong(container, path, key, static_cast<LONG>(Pick(3)));
    switch (act) {
      case 2:
        SetCopy(container, path, key);
        break;
      case 3:
        SetNew(container, path, key);
        break;
      case 4:
        Remove(container, path, key);
        break;
      case 5:
        Assign(container, path);
        break;
      case 6:
        Merge(container, path);
        break;
      case 7:
        SetId(container, path);
        break;
      case 8:
        Pick(4) == 0 ? Flush(container, path) : Move(at);
        break;
      default:
        Ask(container, path, key);
        break;
    }
  }

  void Check() {
    for (std::size_t i = 0; i < kTops; ++i) ASSERT_EQ(Text(tops_[i]), Text(plain_[i]));
    for (const Handle& handle : handles_) ASSERT_EQ(Text(*handle.instance), Text(At(handle.path)));
  }

 private:
  static constexpr std::size_t kTops = 3;
  struct Path {
    std::size_t top = 0;
    std::vector<LONG> keys;
    bool StartsWith(const Path& other) const {
      return top == other.top && keys.size() >= other.keys.size() &&
             std::equal(other.keys.begin(), other.keys.end(), keys.begin());
    }
    Path Below(LONG key) const {
      Path path = *this;
      path.keys.push_back(key);
      return path;
    }
  };
  struct Handle {
    Path path;
    BaseContainer* instance;
  };

  std::size_t Pick(std::size_t count) { return random_() % count; }

  Plain& At(const Path& path) {
    Plain* plain = &plain_[path.top];
    for (const LONG key : path.keys) plain = &plain->Find(key)->nested[0];
    return *plain;
  }

  // Any container that is known, with its double.
  std::pair<const BaseContainer*, Plain> Any() {
    const std::size_t at = Pick(handles_.size() + kTops);
    if (at < kTops) return {&tops_[at], plain_[at]};
    return {handles_[at - kTops].instance, At(handles_[at - kTops].path)};
  }

  void Forget(const Path& path, bool itself) {
    std::erase_if(handles_, [&](const Handle& handle) {
      return handle.path.StartsWith(path) && (itself || handle.path.keys.size() > path.keys.size());
    });
  }

  // A value that changes nothing leaves the instance where it is.
  void SetPlain(const Path& path, LONG key, const Plain::Cell& cell) {
    Plain before;
    if (Plain::Cell* present = At(path).Find(key)) before.Set(key, *present);
    Plain after;
    after.Set(key, cell);
    At(path).Set(key, cell);
    if (Text(before) != Text(after)) Forget(path.Below(key), true);
  }

  void SetLong(BaseContainer& container, const Path& path, LONG key, LONG value) {
    container.SetLong(key, value);
    SetPlain(path, key, {value, {}});
  }

  void SetCopy(BaseContainer& container, const Path& path, LONG key) {
    const auto [source, plain] = Any();
    if (plain.Size() > 60 || plain_[path.top].Size() > 400) return;
    container.SetContainer(key, *source);
    SetPlain(path, key, {0, {plain}});
  }

  void SetNew(BaseContainer& container, const Path& path, LONG key) {
    BaseContainer fresh(key);
    fresh.SetLong(key, key);
    Plain plain{key, {{key, {key, {}}}}};
    container.SetData(key, GeData(fresh));
    SetPlain(path, key, {0, {plain}});
  }

  void Remove(BaseContainer& container, const Path& path, LONG key) {
    ASSERT_EQ(container.RemoveData(key), At(path).Remove(key));
    Forget(path.Below(key), true);
  }

  void Assign(BaseContainer& container, const Path& path) {
    const auto [source, plain] = Any();
    if (source == &container || plain.Size() > 60) return;
    container = *source;
    At(path) = plain;
    Forget(path, false);
  }

  void Merge(BaseContainer& container, const Path& path) {
    const auto [source, plain] = Any();
    if (plain.Size() > 60 || plain_[path.top].Size() > 400) return;
    container.MergeContainer(*source);
    for (const auto& [key, cell] : plain.cells) SetPlain(path, key, cell);
  }

  void SetId(BaseContainer& container, const Path& path) {
    const auto id = static_cast<LONG>(Pick(3));
    container.SetId(id);
    At(path).id = id;
  }

  void Flush(BaseContainer& container, const Path& path) {
    container.FlushAll();
    At(path).cells.clear();
    Forget(path, false);
  }

  // There and back; the instances go along on the way there and end on the way back.
  void Move(std::size_t at) {
    if (at >= kTops) return;
    BaseContainer elsewhere = std::move(tops_[at]);
    for (const Handle& handle : handles_) {
      ASSERT_EQ(Text(*handle.instance), Text(At(handle.path)));
    }
    tops_[at] = std::move(elsewhere);
    Forget({at, {}}, true);
  }

  void Ask(BaseContainer& container, const Path& path, LONG key) {
    BaseContainer* instance = container.GetContainerInstance(key);
    Plain::Cell* cell = At(path).Find(key);
    ASSERT_EQ(instance != nullptr, cell && !cell->nested.empty());
    if (!instance || handles_.size() > 30) return;
    const Path below = path.Below(key);
    for (const Handle& handle : handles_) {
      if (handle.path.keys == below.keys && handle.path.top == below.top) {
        ASSERT_EQ(handle.instance, instance);
        return;
      }
    }
    handles_.push_back({below, instance});
  }

  std::mt19937 random_;
  LONG keys_;
  BaseContainer tops_[kTops];
  Plain plain_[kTops];
  std::vector<Handle> handles_;
};

class RandomOperations : public testing::TestWithParam<LONG> {};

void Work(unsigned seed, LONG keys) {
  Workshop workshop(seed, keys);
  for (int step = 0; step < 1500; ++step) {
    SCOPED_TRACE(testing::Message() << "seed " << seed << " step " << step);
    workshop.Step();
    if (step % 3 == 0) workshop.Check();
    if (testing::Test::HasFatalFailure()) return;
  }
}

TEST_P(RandomOperations, AgreeWithDeepCopiesAndGiveAllMemoryBack) {
  for (unsigned seed = 0; seed < 12; ++seed) Work(seed, GetParam());
  const long before = tests::blocksHeld;
  Work(11, GetParam());
  EXPECT_EQ(tests::blocksHeld, before);
}

// Few keys: instances are met again and again. Many: containers of the long form.
INSTANTIATE_TEST_SUITE_P(Keys, RandomOperations, testing::Values(3, 6, 80));

}  // namespace
