#include "engine/states/LostSearch.h"

#include <algorithm>

#include "engine/scene/DocumentState.h"
#include "engine/scene/NodeIds.h"

namespace engine {

using host::BaseContainer;
using host::BaseDocument;
using host::RenderData;

LostSearch::LostSearch(const BaseDocument& doc, const std::vector<StoredState>& states,
                       const Difference& toScene)
    : doc_(doc),
      states_(states),
      changes_(toScene.changes),
      same_(doc, false),
      isKept_(toScene.changes.size()) {
  for (std::size_t i = 0; i < changes_.size(); ++i) {
    if (changes_[i].kind == ChangeKind::Changed && changes_[i].element != 0)
      wanted_.push_back({changes_[i].element, i});
  }
  // In scenes as they were made they are in order already.
  if (!std::ranges::is_sorted(wanted_, {}, &Wanted::element))
    std::ranges::sort(wanted_, {}, &Wanted::element);
  left_ = wanted_.size();
}

bool LostSearch::Advance(std::size_t records) {
  while (records > 0) {
    if (list_ && left_ > 0 && nextStretch_ < list_->Stretches().size()) {
      records -= std::min(records, LookAtStretch(nextStretch_++));
    } else if (BeginNextList()) {
      --records;
    } else {
      return false;
    }
  }
  return true;
}

std::vector<std::size_t> LostSearch::Take() const {
  std::vector<std::size_t> lost;
  for (std::size_t i = 0; i < changes_.size(); ++i) {
    if (changes_[i].kind != ChangeKind::Changed) continue;
    if (!(changes_[i].part == Part::Camera ? isCameraKept_ : isKept_[i])) lost.push_back(i);
  }
  return lost;
}

// Once nothing is left to be found, the lists are passed over, but not the states: each may still
// be the one that has the scene's camera.
bool LostSearch::BeginNextList() {
  if (left_ > 0 && nextList_ < kRecordLists.size()) {
    const ListRow& row = kRecordLists[nextList_++];
    list_.emplace(states_[nextState_ - 1].record, row.key, row.link);
    nextStretch_ = 0;
    return true;
  }
  if (nextState_ == states_.size()) return false;
  list_.reset();
  nextList_ = 0;
  LookAtScene(states_[nextState_++].record);
  return true;
}

void LostSearch::LookAtScene(const BaseContainer& record) {
  if (RecordedCamera(doc_, record) == CameraNow(doc_)) isCameraKept_ = true;
  const RenderData* kept = RecordedSettings(doc_, record);
  const RenderData* first = doc_.GetFirstRenderData();
  // Loading makes the first settings the active ones, so no Stagemark brings back that others are.
  if (!kept || !first || ActiveRenderDataIdOf(doc_) != IdOf(*first)) return;
  const auto wanted = std::ranges::lower_bound(wanted_, IdOf(*first), {}, &Wanted::element);
  if (wanted == wanted_.end() || wanted->element != IdOf(*first) || isKept_[wanted->change]) return;
  if (!FieldsThatDiffer(FieldsOfSettings(*first), FieldsOfSettings(*kept)).empty()) return;
  isKept_[wanted->change] = true;
  --left_;
}

// In a stretch that knows its elements records and wanted ones are merged, both in ascending order;
// in any other each record is looked for by halving. A stretch of none of those wanted costs no
// look at its records, each of which would be a miss of the cache.
std::size_t LostSearch::LookAtStretch(std::size_t number) {
  const Stretch entries = list_->Stretches()[number];
  const bool isSeen =
      list_->LiesInContainer() && !seen_.insert({entries.data(), entries.size()}).second;
  if (entries.empty() || isSeen) return 1;
  const LinkRange range = list_->ElementsOf(number);
  auto at = wanted_.begin();
  auto end = wanted_.end();
  if (range.IsKnown()) {
    at = std::ranges::lower_bound(wanted_, range.least, {}, &Wanted::element);
    end = std::ranges::upper_bound(at, end, range.greatest, {}, &Wanted::element);
    if (at == end) return 1;
  }
  for (std::size_t i = 0; i < entries.size(); ++i) {
    FetchRecordAhead(entries, i);
    const ContainerBody* record = RecordOf(entries[i]);
    const NodeId element = list_->ElementOf(record);
    if (range.IsKnown()) {
      while (at != end && at->element < element) ++at;  // both ascend
    } else {
      at = std::ranges::lower_bound(wanted_, element, {}, &Wanted::element);
    }
    if (at != end && at->element == element) LookAt(*at, record);
  }
  return entries.size();
}

void LostSearch::LookAt(const Wanted& wanted, const ContainerBody* record) {
  const host::BaseList2D* element =
      isKept_[wanted.change] ? nullptr : FindNode(&doc_, wanted.element);
  if (!element || !same_.IsAsRecorded(changes_[wanted.change].part, *element, record)) return;
  isKept_[wanted.change] = true;
  --left_;
}

std::vector<std::size_t> FindLost(const BaseDocument& doc, const std::vector<StoredState>& states,
                                  const Difference& toScene) {
  LostSearch search(doc, states, toScene);
  while (search.Advance(SIZE_MAX)) {
  }
  return search.Take();
}

}  // namespace engine
