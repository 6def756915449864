#include "engine/undo/StoredData.h"

#include <algorithm>
#include <new>
#include <utility>

#include "engine/undo/UndoHistory.h"

namespace engine {

using host::BaseContainer;
using host::LONG;

namespace {

bool SameUnder(LONG key, const BaseContainer& a, const BaseContainer& b) {
  const BaseContainer* one = a.GetContainerInstance(key);
  const BaseContainer* other = b.GetContainerInstance(key);
  return one && other ? Identical(*one, *other) : one == other;
}

bool Has(const BaseContainer& data, LONG key) { return data.FindIndex(key) != host::NOTOK; }

// Of the containers that are not the same in both.
std::vector<LONG> ChangedKeys(const BaseContainer& before, const BaseContainer& now) {
  std::vector<LONG> keys;
  ForEachEntry(before, [&](LONG key, const host::GeData&) {
    if (!SameUnder(key, before, now)) keys.push_back(key);
  });
  ForEachEntry(now, [&](LONG key, const host::GeData&) {
    if (!Has(before, key)) keys.push_back(key);
  });
  return keys;
}

// `kept` with what `live` has under all other keys.
BaseContainer Merged(const BaseContainer& kept, const BaseContainer& live,
                     const std::vector<LONG>& keys) {
  const auto isExchanged = [&](LONG key) {
    return std::find(keys.begin(), keys.end(), key) != keys.end();
  };
  BaseContainer merged = kept;
  ForEachEntry(kept, [&](LONG key, const host::GeData&) {
    if (!isExchanged(key) && !Has(live, key)) merged.RemoveData(key);
  });
  ForEachEntry(live, [&](LONG key, const host::GeData& value) {
    if (!isExchanged(key)) merged.SetData(key, value);
  });
  return merged;
}

}  // namespace

void KeptStores::Exchange(host::BaseDocument& doc) {
  BaseContainer live = NodeAccess::Data(doc);
  NodeAccess::Data(doc) = Merged(data, live, keys);
  data = std::move(live);
  std::swap(BodyOf(doc).deletedStates, deleted);
  if (outside) outside->Exchange(doc);
}

StoredDataScope::StoredDataScope(host::BaseDocument& doc, const std::string& name,
                                 std::vector<LONG> stores)
    : doc_(doc),
      stores_(std::move(stores)),
      scope_(doc, name),
      before_(*doc.GetDataInstance()),
      deletedBefore_(SharedDeletedStatesOf(doc)),
      outer_(UndoHistory::Of(doc).FollowSettings(true)) {}

StoredDataScope::~StoredDataScope() {
  UndoHistory& history = UndoHistory::Of(doc_);
  history.FollowSettings(outer_);
  if (!HasChanged()) return;
  try {
    auto kept = std::make_unique<KeptStores>();
    kept->keys = ChangedKeys(before_, *doc_.GetDataInstance());
    kept->data = std::move(before_);
    kept->deleted = std::move(deletedBefore_);
    kept->outside = std::move(outside_);
    history.AddStores(std::move(kept), weight_);
  } catch (const std::bad_alloc&) {
    // No step is better than one that takes back a half.
    history.Abandon();
  }
}

bool StoredDataScope::HasChanged() const {
  const BaseContainer& now = *doc_.GetDataInstance();
  return deletedBefore_ != SharedDeletedStatesOf(doc_) ||
         std::any_of(stores_.begin(), stores_.end(),
                     [&](LONG key) { return !SameUnder(key, before_, now); });
}

const host::RenderData* StoredDataScope::Removed(NodeId settings) const {
  return AsRenderData(UndoHistory::Of(doc_).ParkedNode(settings));
}

}  // namespace engine
