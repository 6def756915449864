// LostSearch: of what loading would change, that which no Stagemark could bring back; in steps, so
// that a window lives on meanwhile. Each stretch of records is looked at once, however many states
// share it, and only where it may hold an element that is asked about. Main thread.
#pragma once

#include <optional>
#include <unordered_set>
#include <utility>
#include <vector>

#include "engine/states/Difference.h"
#include "engine/states/RecordList.h"

namespace engine {

class LostSearch {
 public:
  // `toScene` came from CompareWithScene. It, the states and the document neither change nor go
  // while the search lives.
  LostSearch(const host::BaseDocument& doc, const std::vector<StoredState>& states,
             const Difference& toScene);

  // Looks at about so many more records; false when all is done.
  bool Advance(std::size_t records);
  // After the last step: indices of the changes that are lost.
  std::vector<std::size_t> Take() const;

 private:
  struct Wanted {
    NodeId element;
    std::size_t change;
  };
  using Stretch = RecordList::Stretch;
  struct StretchHash {
    std::size_t operator()(const std::pair<const Entry*, std::size_t>& stretch) const {
      return std::hash<const Entry*>()(stretch.first) ^ stretch.second;
    }
  };

  bool BeginNextList();
  void LookAtScene(const host::BaseContainer& record);
  // The number of records that were looked at, at least 1.
  std::size_t LookAtStretch(std::size_t number);
  void LookAt(const Wanted& wanted, const ContainerBody* record);

  const host::BaseDocument& doc_;
  const std::vector<StoredState>& states_;
  const std::vector<ElementChange>& changes_;
  SceneComparison same_;
  std::vector<Wanted> wanted_;  // by element
  std::vector<bool> isKept_;    // by change: a state has it
  std::size_t left_ = 0;        // of those wanted
  bool isCameraKept_ = false;
  std::unordered_set<std::pair<const Entry*, std::size_t>, StretchHash> seen_;
  // The list in hand and the next after it.
  std::optional<RecordList> list_;
  std::size_t nextStretch_ = 0;
  std::size_t nextList_ = kRecordLists.size();
  std::size_t nextState_ = 0;
};

}  // namespace engine
