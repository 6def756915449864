// "Set Selected Objects" and "Set Selected Tags on Checked Elements": the selected items' current
// state written into the checked elements. A known item's record is refreshed in place; a new item
// goes under the key equal to the number of entries, whatever stands there, as everywhere where
// records are keyed by position.
#include "source/Stagemarks/SMDialog.h"
#include "source/Stagemarks/bulk/CheckedElements.h"
#include "source/Stagemarks/bulk/RecordFinder.h"
#include "source/Stagemarks/keys/ElementKeys.h"
#include "source/Stagemarks/recording/Records.h"

namespace stagemarks {

namespace {

Items ItemsOf(const AtomArray& selection) {
  Items items;
  for (LONG i = 0; i < selection.GetCount(); ++i)
    items.push_back(static_cast<BaseList2D*>(selection.GetIndex(i)));
  return items;
}

// For each item either its first record changed by refresh(record, i), or the one made by create(i,
// key) under `key`.
template <class Refresh, class Create>
void WriteItems(BaseContainer& records, LONG linkKey, const BaseDocument* doc, const Items& items,
                Refresh refresh, Create create) {
  RecordFinder finder(records, linkKey, doc, items);
  for (std::size_t i = 0; i < items.size(); ++i) {
    const LONG known = finder.Position(i);
    const LONG key = known != NOTOK ? records.GetIndexId(known) : records.GetCount();
    const BaseList2D* before = known != NOTOK ? items[i] : finder.Target(records.FindIndex(key));
    if (known != NOTOK) {
      BaseContainer record = records.GetContainer(key);
      refresh(record, i);
      records.SetContainer(key, record);
    } else {
      records.SetContainer(key, create(i, key));
    }
    finder.Written(records.FindIndex(key), before);
  }
}

// A tag and what is recorded of it, captured once for all elements.
struct CapturedTags {
  Items tags;
  std::vector<BaseContainer> captures;

  void Refresh(BaseContainer& record, std::size_t i) const { record.MergeContainer(captures[i]); }
  BaseContainer Create(std::size_t i, LONG key) const {
    BaseContainer record = captures[i];
    record.SetId(key);
    record.SetLink(kTagLink, tags[i]);
    return record;
  }
};

}  // namespace

Bool SMDialog::SetObjectsOnCheckedElements() {
  const BaseContainer checked = GetCheckedElements();
  BaseDocument* doc = GetActiveDocument();
  BaseContainer* store = doc ? doc->GetDataInstance()->GetContainerInstance(kRecordStore) : nullptr;
  if (!store || checked.GetCount() == 0) return FALSE;
  listStore_ = doc->GetDataInstance()->GetContainer(kListStore);

  const AutoAlloc<AtomArray> selection;
  doc->GetActiveObjects(*selection, GETACTIVEOBJECTFLAGS_CHILDREN);
  const Items items = ItemsOf(*selection);
  const auto object = [&](std::size_t i) -> const BaseObject& {
    return *static_cast<BaseObject*>(items[i]);
  };
  const Bool done =
      CheckedElements(*store, checked, listStore_).ForEach([&](BaseContainer& element) {
        BaseContainer* objects = element.GetContainerInstance(kObjects);
        if (!objects || items.empty()) return FALSE;
        WriteItems(
            *objects, kObjectLink, doc, items,
            [&](BaseContainer& record, std::size_t i) { WriteObjectSwitches(record, object(i)); },
            [&](std::size_t i, LONG key) { return ObjectRecord(object(i), key); });
        return TRUE;
      });
  if (done) doc->SetChanged();
  return done;
}

Bool SMDialog::SetTagsOnCheckedElements() {
  const BaseContainer checked = GetCheckedElements();
  BaseDocument* doc = GetActiveDocument();
  BaseContainer* store = doc ? doc->GetDataInstance()->GetContainerInstance(kRecordStore) : nullptr;
  if (!store || checked.GetCount() == 0) return FALSE;
  listStore_ = doc->GetDataInstance()->GetContainer(kListStore);

  const AutoAlloc<AtomArray> selection;
  doc->GetActiveTags(*selection);
  CapturedTags captured;
  for (BaseList2D* item : ItemsOf(*selection)) {
    const TagTypeRow* row = FindTagType(item->GetType());
    if (!row) continue;
    captured.tags.push_back(item);
    captured.captures.push_back(CaptureTag(static_cast<BaseTag*>(item), row->capture));
  }
  const Bool done =
      CheckedElements(*store, checked, listStore_).ForEach([&](BaseContainer& element) {
        BaseContainer* tags = element.GetContainerInstance(kTags);
        if (!tags || selection->GetCount() == 0) return FALSE;
        WriteItems(
            *tags, kTagLink, doc, captured.tags,
            [&](BaseContainer& record, std::size_t i) { captured.Refresh(record, i); },
            [&](std::size_t i, LONG key) { return captured.Create(i, key); });
        return TRUE;
      });
  if (done) doc->SetChanged();
  return done;
}

}  // namespace stagemarks
