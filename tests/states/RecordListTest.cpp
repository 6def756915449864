// Two lists of records side by side, held against a look at every record of both.
#include "engine/states/RecordList.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>
#include <tuple>

#include "engine/core/ContainerContents.h"

namespace {

using engine::NodeId;
using host::BaseContainer;
using host::LONG;

using Found = std::set<std::tuple<NodeId, const void*, const void*>>;

std::map<NodeId, const void*> LastRecords(const BaseContainer& list) {
  std::map<NodeId, const void*> last;
  for (LONG i = 0; i < list.GetCount(); ++i) {
    const BaseContainer record = list.GetContainer(i);
    const NodeId element = engine::LinkOf(record, engine::kStoredObjectLink);
    if (element != 0) last[element] = engine::BodyOf(record);
  }
  return last;
}

Found ThatDiffer(const BaseContainer& left, const BaseContainer& right) {
  std::map<NodeId, const void*> lefts = LastRecords(left);
  std::map<NodeId, const void*> rights = LastRecords(right);
  Found found;
  for (const auto& [element, record] : lefts) found.emplace(element, record, rights[element]);
  for (const auto& [element, record] : rights) found.emplace(element, lefts[element], record);
  std::erase_if(found, [](const auto& row) { return std::get<1>(row) == std::get<2>(row); });
  return found;
}

Found Unshared(const BaseContainer& left, const BaseContainer& right) {
  BaseContainer states[2];
  states[0].SetContainer(engine::kStoredObjects, left);
  states[1].SetContainer(engine::kStoredObjects, right);
  const engine::RecordList a(states[0], engine::kStoredObjects, engine::kStoredObjectLink);
  const engine::RecordList b(states[1], engine::kStoredObjects, engine::kStoredObjectLink);
  Found found;
  for (const engine::RecordPair& pair : UnsharedRecords(a, b)) {
    EXPECT_TRUE(found.emplace(pair.element, pair.left, pair.right).second) << "told twice";
  }
  return found;
}

BaseContainer RecordOf(NodeId element, LONG value) {
  BaseContainer record;
  engine::SetLinkId(record, engine::kStoredObjectLink, element);
  record.SetLong(engine::kStoredObjectLink + 1, value);
  return record;
}

// How the elements of a list follow one another, and which ones are written into its copy.
struct Shape {
  const char* name;
  NodeId (*element)(LONG i);
  NodeId (*written)(LONG i);
};
const Shape kShapes[] = {
    {"in order", [](LONG i) { return NodeId(100 + i); }, [](LONG i) { return NodeId(100 + i); }},
    {"backwards", [](LONG i) { return NodeId(9000 - i); }, [](LONG i) { return NodeId(9000 - i); }},
    {"twice, far apart", [](LONG i) { return NodeId(100 + i % 700); },
     [](LONG i) { return NodeId(100 + i % 700); }},
    {"in order, others written", [](LONG i) { return NodeId(100 + i); },
     [](LONG i) { return NodeId(100 + i * 7 % 1500); }},
    {"some without element", [](LONG i) { return NodeId(i % 5 == 0 ? 0 : 100 + i); },
     [](LONG i) { return NodeId(i % 3 == 0 ? 0 : 100 + i); }},
};

TEST(RecordList, TellsWhatIsNotSharedOfElementsThatMayOccurTwice) {
  std::mt19937 random(1);
  for (const Shape& shape : kShapes) {
    for (const LONG count : {3, 60, 500, 1400}) {
      BaseContainer list;
      for (LONG i = 0; i < count; ++i) list.SetContainer(i, RecordOf(shape.element(i), 0));
      for (const LONG writes : {0, 1, 2, 40}) {
        SCOPED_TRACE(std::string(shape.name) + ", " + std::to_string(writes) + " of " +
                     std::to_string(count));
        BaseContainer copy = list;
        for (LONG w = 0; w < writes; ++w) {
          const auto at = static_cast<LONG>(random() % static_cast<unsigned>(count));
          copy.SetContainer(at, RecordOf(shape.written(at), 1 + w));
        }
        // Behind the end of the other one, as carrying over leaves them.
        for (LONG w = 0; w < writes / 20; ++w)
          copy.SetContainer(copy.GetCount(), RecordOf(shape.element(w), 100));
        EXPECT_EQ(Unshared(list, copy), ThatDiffer(list, copy));
        EXPECT_EQ(Unshared(copy, list), ThatDiffer(copy, list));
      }
    }
  }
}

}  // namespace
