// Mending what FindFindings finds, where there is one safe answer: in copies of the stored
// containers, which are written back at the end.
#include <algorithm>
#include <cstring>
#include <functional>
#include <unordered_map>

#include "engine/scene/NodeIds.h"
#include "engine/states/Findings.h"
#include "engine/states/RecordList.h"
#include "engine/states/StoredStates.h"

namespace engine {

using host::BaseContainer;
using host::BaseDocument;
using host::LONG;

namespace {

// The containers are copies, which share with the document, and are written back at the very end: a
// failure in between, such as one of memory, leaves the document as it is.
class Mending {
 public:
  explicit Mending(BaseDocument& doc)
      : doc_(doc),
        records_(doc.GetDataInstance()->GetContainer(kStagemarksId)),
        entries_(doc.GetDataInstance()->GetContainer(kStoredEntries)) {}

  // Rows without a record go; each counts.
  void DropEntriesWithoutRecord() {
    for (LONG i = entries_.GetCount(); i-- > 0;) {
      const LONG id = entries_.GetIndexId(i);
      if (!StoredUnder(&entries_, id) || StoredUnder(&records_, id)) continue;
      entries_.RemoveData(id);
      ++count_;
    }
  }

  // An entry has what the record says itself: its name and the date. It is not made the current
  // one.
  void AddMissingEntries() {
    for (LONG i = 0; i < records_.GetCount(); ++i) {
      const LONG id = records_.GetIndexId(i);
      if (!StoredUnder(&records_, id) || StoredUnder(&entries_, id)) continue;
      const BaseContainer* record = records_.GetContainerInstance(id);
      BaseContainer entry(id);
      entry.SetString(kStoredName, record->GetString(kStoredName));
      entry.SetContainer(kStoredDate, record->GetContainer(kStoredDate));
      entries_.SetContainer(id, entry);
      ++count_;
    }
  }

  // IDs from 0 on in their order: below the number of Stagemarks all are found. Their order stays,
  // since of two Stagemarks of one name the first is the one that is loaded.
  void NumberAnew() {
    std::vector<LONG> ids;
    for (const BaseContainer* store : {&records_, &entries_}) {
      for (LONG i = 0; i < store->GetCount(); ++i) {
        if (StoredUnder(store, store->GetIndexId(i))) ids.push_back(store->GetIndexId(i));
      }
    }
    std::ranges::sort(ids);
    ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
    records_ = Renumbered(records_, ids);
    entries_ = Renumbered(entries_, ids);
  }

  // Takes out the records of each list that `goes` says so of: by list, its position among them and
  // the record. Lists with gaps in their keys are left alone. What states share is mended once.
  using Goes = std::function<std::vector<bool>(const RecordList&)>;
  void DropRecords(const Goes& goes) {
    for (LONG i = 0; i < records_.GetCount(); ++i) {
      const LONG id = records_.GetIndexId(i);
      if (!StoredUnder(&records_, id)) continue;
      BaseContainer record = records_.GetContainer(id);
      bool changed = false;
      for (const ListRow& row : kRecordLists) changed |= DropFrom(record, row, goes);
      if (!changed) continue;
      records_.SetContainer(id, record);
      ++count_;
    }
  }

  std::size_t Finish() {
    if (count_ == 0) return 0;
    doc_.GetDataInstance()->SetContainer(kStagemarksId, records_);
    doc_.GetDataInstance()->SetContainer(kStoredEntries, entries_);
    doc_.SetChanged();
    return count_;
  }

 private:
  // Values that are no containers, such as the note among the list entries, are not Stagemarks and
  // keep their keys, behind them.
  BaseContainer Renumbered(const BaseContainer& store, const std::vector<LONG>& ids) {
    BaseContainer result(store.GetId());
    for (std::size_t i = 0; i < ids.size(); ++i) {
      if (!StoredUnder(&store, ids[i])) continue;
      BaseContainer one = store.GetContainer(ids[i]);
      const auto id = static_cast<LONG>(i);
      if (one.GetId() != id || ids[i] != id) ++count_;
      one.SetId(id);
      result.SetContainer(id, one);
    }
    for (LONG i = 0; i < store.GetCount(); ++i) {
      const LONG key = store.GetIndexId(i);
      if (store.GetType(key) != host::DA_CONTAINER) result.SetData(key, store.GetData(key));
    }
    return result;
  }

  // Loading reads the keys from 0 on, in whatever order they lie. In a list with gaps, moving
  // records to other keys would bring some of them back to life.
  static bool HasNoGap(const BaseContainer& list) {
    for (LONG i = 0; i < list.GetCount(); ++i) {
      if (list.GetIndexId(i) < 0 || list.GetIndexId(i) >= list.GetCount()) return false;
    }
    return true;
  }

  bool DropFrom(BaseContainer& record, const ListRow& row, const Goes& goes) {
    const RecordList list(record, row.key, row.link);
    if (list.IsEmpty()) return false;
    const BaseContainer before = record.GetContainer(row.key);
    const auto [place, isNew] = mended_.try_emplace(BodyOf(before), before);
    if (isNew) {
      kept_.push_back(before);  // so that no other list comes to lie at its address
      const std::vector<bool> gone = goes(list);
      if (HasNoGap(before) && std::ranges::find(gone, true) != gone.end())
        place->second = Without(before, gone);
    }
    if (BodyOf(place->second) == BodyOf(before)) return false;
    record.SetContainer(row.key, place->second);
    return true;
  }

  // A record's own ID is its place.
  static BaseContainer Without(const BaseContainer& list, const std::vector<bool>& gone) {
    BaseContainer result(list.GetId());
    LONG next = 0;
    for (LONG i = 0; i < list.GetCount(); ++i) {
      if (gone[static_cast<std::size_t>(i)]) continue;
      BaseContainer record = list.GetContainer(i);
      if (record.GetId() == i) record.SetId(next);
      result.SetContainer(next++, record);
    }
    return result;
  }

  BaseDocument& doc_;
  BaseContainer records_;
  BaseContainer entries_;
  std::size_t count_ = 0;
  std::unordered_map<const void*, BaseContainer> mended_;
  std::vector<BaseContainer> kept_;
};

// All but the last record of an element.
std::vector<bool> EarlierRecords(const RecordList& list) {
  std::vector<bool> gone;
  std::unordered_map<NodeId, std::size_t> last;
  for (const RecordList::Stretch stretch : list.Stretches()) {
    for (const Entry& entry : stretch) {
      const NodeId id = list.ElementOf(RecordOf(entry));
      if (id != 0) {
        const auto [place, isNew] = last.try_emplace(id, gone.size());
        if (!isNew) gone[std::exchange(place->second, gone.size())] = true;
      }
      gone.push_back(false);
    }
  }
  return gone;
}

// A record without a link is of no element at all, rather than of one that is gone: it stays.
std::vector<bool> RecordsOfNothing(const BaseDocument& doc, const RecordList& list) {
  std::vector<bool> gone;
  for (const RecordList::Stretch stretch : list.Stretches()) {
    for (const Entry& entry : stretch) {
      const NodeId id = list.ElementOf(RecordOf(entry));
      gone.push_back(id != 0 && !FindNode(&doc, id));
    }
  }
  return gone;
}

}  // namespace

Result<std::size_t> FixFindings(BaseDocument& doc, const FindingKind& kind) {
  Mending mending(doc);
  const std::string code = kind.code;
  if (code == "record-missing") {
    mending.DropEntriesWithoutRecord();
  } else if (code == "entry-missing") {
    mending.AddMissingEntries();
  } else if (code == "hidden-by-id") {
    mending.NumberAnew();
  } else if (code == "recorded-twice") {
    mending.DropRecords(EarlierRecords);
  } else if (code == "link-gone") {
    mending.DropRecords([&](const RecordList& list) { return RecordsOfNothing(doc, list); });
  } else {
    return Result<std::size_t>::Failure("\"" + code + "\" has no one safe answer: " + kind.remedy);
  }
  return mending.Finish();
}

}  // namespace engine
