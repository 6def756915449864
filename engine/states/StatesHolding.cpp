#include "engine/states/StatesHolding.h"

#include <algorithm>
#include <unordered_map>

#include "engine/scene/NodeIds.h"
#include "engine/scene/TreeWalk.h"
#include "engine/states/RecordList.h"

namespace engine {

namespace {

// Looks for records of some elements, in each list of records once.
class SearchForElements {
 public:
  explicit SearchForElements(const std::vector<host::BaseList2D*>& elements) {
    for (const host::BaseList2D* element : elements) {
      wanted_.Insert(IdOf(*element));
      for (const host::GeListNode* node = NextInside(*element, *element); node;
           node = NextInside(*node, *element))
        wanted_.Insert(IdOf(*node));
    }
  }

  bool IsIn(const host::BaseDocument& doc, const host::BaseContainer& record) {
    const auto camera = RecordedCamera(doc, record);
    if (camera && wanted_.Has(*camera)) return true;
    return std::ranges::any_of(kRecordLists,
                               [&](const ListRow& row) { return IsInList(record, row); });
  }

 private:
  // Copies of a list are one block, also those of several states.
  bool IsInList(const host::BaseContainer& state, const ListRow& row) {
    const host::BaseContainer* stored = state.GetContainerInstance(row.key);
    if (!stored) return false;
    const auto [known, isNew] = searched_.try_emplace(BodyOf(*stored), false);
    if (isNew) known->second = Search(RecordList(state, row.key, row.link), row);
    return known->second;
  }

  bool Search(const RecordList& list, const ListRow& row) const {
    const auto holds = [&](const Entry& entry) {
      const ContainerBody* record = RecordOf(entry);
      return wanted_.Has(list.ElementOf(record)) ||
             (row.key == kStoredTags && wanted_.Has(LinkIn(record, kStoredMaterialLink)));
    };
    return std::ranges::any_of(list.Stretches(), [&](const RecordList::Stretch& stretch) {
      return std::ranges::any_of(stretch, holds);
    });
  }

  NodeSet wanted_;
  std::unordered_map<const void*, bool> searched_;  // by the list, which stays where it is
};

}  // namespace

std::vector<std::string> StatesHolding(const host::BaseDocument& doc,
                                       const std::vector<host::BaseList2D*>& elements) {
  SearchForElements search(elements);
  std::vector<std::string> names;
  for (const StoredState& state : ListedStates(doc)) {
    if (state.hasRecord && search.IsIn(doc, state.record)) names.push_back(state.name);
  }
  return names;
}

}  // namespace engine
