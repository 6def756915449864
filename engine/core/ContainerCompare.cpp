// Comparing containers of any depth: explicitly, not by recursion to match.
#include "engine/core/ContainerCompare.h"

#include <algorithm>
#include <set>
#include <utility>
#include <vector>

namespace engine {

namespace {

constexpr int kDeepestComparison = 16;

// Walks the entries of a body by stretches.
struct Stretches {
  const ContainerBody* body;
  std::uint32_t next = 0;
  EntrySpan current = {};

  // False at the end.
  bool Fill() {
    if (current.empty()) current = NextEntries(body, next);
    return !current.empty();
  }
};

bool SameNumbers(const NumberBlock& a, const NumberBlock& b) {
  for (int i = 0; i < 3; ++i) {
    if (BitsOf(a.numbers[i]) != BitsOf(b.numbers[i])) return false;
  }
  return true;
}

bool SameTexts(Value a, Value b) {
  return TextBlock::View(BlockOf<TextBlock>(a.bits)) == TextBlock::View(BlockOf<TextBlock>(b.bits));
}

class Comparison {
 public:
  explicit Comparison(OwnIds ids) : ids_(ids) {}

  bool Run(const ContainerBody* a, const ContainerBody* b) {
    if (!Bodies(a, b, 0)) return false;
    while (!waiting_.empty()) {
      const auto [x, y] = waiting_.back();
      waiting_.pop_back();
      if (!Bodies(x, y, 0)) return false;
    }
    return true;
  }

 private:
  bool Bodies(const ContainerBody* a, const ContainerBody* b, int depth) {
    if (a == b) return true;
    if (ids_ == OwnIds::kCompared && IdOf(a) != IdOf(b)) return false;
    if (SizeOf(a) != SizeOf(b)) return false;
    Stretches left{a};
    Stretches right{b};
    while (left.Fill() && right.Fill()) {
      const std::size_t count = std::min(left.current.size(), right.current.size());
      // Copies share their chunks.
      if (left.current.data() != right.current.data() &&
          !Entries(left.current, right.current, count, depth))
        return false;
      left.current = left.current.subspan(count);
      right.current = right.current.subspan(count);
    }
    return true;
  }

  bool Entries(const EntrySpan& a, const EntrySpan& b, std::size_t count, int depth) {
    for (std::size_t i = 0; i < count; ++i) {
      const Entry one = a[i];
      const Entry two = b[i];
      if (one.key != two.key || one.type != two.type) return false;
      if (one.bits != two.bits && !Shared(one.Get(), two.Get(), depth)) return false;
    }
    return true;
  }

  bool Shared(Value a, Value b, int depth) {
    if (a.type == host::DA_CONTAINER)
      return Nested(BlockOf<ContainerBody>(a.bits), BlockOf<ContainerBody>(b.bits), depth);
    return a.type != host::DA_CONTAINER && SameValues(a, b, ids_);
  }

  bool Nested(const ContainerBody* a, const ContainerBody* b, int depth) {
    if (a && b && !a->owners.Unique() && !b->owners.Unique() && !met_.emplace(a, b).second)
      return true;
    if (depth < kDeepestComparison) return Bodies(a, b, depth + 1);
    waiting_.emplace_back(a, b);
    return true;
  }

  OwnIds ids_;
  std::vector<std::pair<const ContainerBody*, const ContainerBody*>> waiting_;
  // Pairs already compared or waiting. Without them, bodies that are shared at every level would be
  // compared along every way to them.
  std::set<std::pair<const ContainerBody*, const ContainerBody*>> met_;
};

[[gnu::noinline]] bool Compare(const ContainerBody* a, const ContainerBody* b, OwnIds ids) {
  return Comparison(ids).Run(a, b);
}

}  // namespace

bool AlikeLaidOut(const ContainerBody& a, const ContainerBody& b) {
  const std::uint64_t* keys = a.Keys().Keys();
  return (keys == b.Keys().Keys() || std::equal(keys, keys + a.size, b.Keys().Keys())) &&
         std::equal(a.Values(), a.Values() + a.size, b.Values());
}

bool SameBodies(const ContainerBody* a, const ContainerBody* b, OwnIds ids) {
  return a == b || (a && b && AlikeShort(*a, *b)) || Compare(a, b, ids);
}

bool SameSharedValues(Value a, Value b, OwnIds ids) {
  switch (a.type) {
    case host::DA_VECTOR:
    case host::DA_TIME:
      return SameNumbers(*BlockOf<NumberBlock>(a.bits), *BlockOf<NumberBlock>(b.bits));
    case host::DA_STRING:
    case host::DA_FILENAME:
      return SameTexts(a, b);
    case host::DA_CONTAINER:
      return SameBodies(BlockOf<ContainerBody>(a.bits), BlockOf<ContainerBody>(b.bits), ids);
    default:
      return false;
  }
}

}  // namespace engine
