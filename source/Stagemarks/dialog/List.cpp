#include <algorithm>
#include <set>
#include <vector>

#include "source/Stagemarks/SMDialog.h"
#include "source/Stagemarks/keys/ElementKeys.h"
#include "source/Stagemarks/keys/Gadgets.h"

namespace stagemarks {

namespace {

constexpr const CHAR* kCurrentMark = "*";
constexpr const CHAR* kNoMark = "  ";

String TwoDigits(LONG value) {
  return value < 10 ? String("0") + LongToString(value) : LongToString(value);
}

// "  MM/DD/YY hh:mm"; the year loses its first two characters and is never padded.
String RecordingTime(const BaseContainer& date) {
  String year = LongToString(date.GetLong(kYear));
  year.Delete(0, 2);
  return String("  ") + TwoDigits(date.GetLong(kMonth)) + "/" + TwoDigits(date.GetLong(kDay)) +
         "/" + year + " " + TwoDigits(date.GetLong(kHour)) + ":" + TwoDigits(date.GetLong(kMinute));
}

struct Listed {
  String name;
  BaseContainer entry;
};

// The entries with content, by name; those of one name stay in the order of the store.
std::vector<Listed> SortedEntries(const BaseContainer& listStore) {
  std::vector<Listed> entries;
  const LONG count = listStore.GetCount();
  for (LONG i = 0; i < count; ++i) {
    const BaseContainer entry = listStore.GetContainer(listStore.GetIndexId(i));
    if (entry.GetCount() > 0) entries.push_back({entry.GetString(kName), entry});
  }
  std::stable_sort(entries.begin(), entries.end(),
                   [](const Listed& a, const Listed& b) { return a.name.Compare(b.name) < 0; });
  return entries;
}

std::set<String> NamesIn(const BaseContainer& checked) {
  std::set<String> names;
  for (LONG i = 0; i < checked.GetCount(); ++i) names.insert(checked.GetIndexData(i).GetString());
  return names;
}

BaseContainer RowOf(const Listed& listed, Bool checked) {
  BaseContainer row;
  row.SetString(kColumnName, listed.name);
  row.SetBool(kColumnChecked, checked);
  row.SetString(kColumnCurrent, listed.entry.GetBool(kCurrent) ? kCurrentMark : kNoMark);
  row.SetString(kColumnDate, RecordingTime(listed.entry.GetContainer(kDate)));
  return row;
}

}  // namespace

void SMDialog::UpdateSMList() {
  BaseDocument* doc = GetActiveDocument();
  if (!doc) return;
  listStore_ = doc->GetDataInstance()->GetContainer(kListStore);
  const std::set<String> checked = NamesIn(GetCheckedElements());
  if (listStore_.FindIndex(kListBuilt) == NOTOK) BuildListEntries(*doc);
  list_.RemoveAll();
  LONG line = 0;
  for (const Listed& listed : SortedEntries(listStore_)) {
    list_.SetItem(line++, RowOf(listed, checked.count(listed.name) > 0));
  }
  list_.DataChanged();
}

// Once per document: scenes from before there was a list store get their entries from the records.
// A document without elements stays as it is. An emptied record makes an entry without contents, so
// that the IDs stay the same.
void SMDialog::BuildListEntries(BaseDocument& doc) {
  const BaseContainer records = doc.GetDataInstance()->GetContainer(kRecordStore);
  const LONG count = records.GetCount();
  if (count == 0) return;
  for (LONG i = 0; i < count; ++i) {
    const LONG id = records.GetIndexId(i);
    if (records.GetType(id) != DA_CONTAINER) continue;
    const BaseContainer record = records.GetContainer(id);
    BaseContainer entry = listStore_.GetContainer(id);
    entry.SetId(id);
    if (record.GetCount() > 0) {
      entry.SetString(kName, record.GetString(kName));
      entry.SetContainer(kDate, record.GetContainer(kDate));
    }
    listStore_.SetContainer(id, entry);
  }
  listStore_.SetBool(kListBuilt, TRUE);
  doc.GetDataInstance()->SetContainer(kListStore, listStore_);
}

String SMDialog::GetListSelection() const {
  BaseSelect selection;
  LONG first = 0;
  LONG last = 0;
  list_.GetSelection(&selection);
  if (selection.GetCount() != 1 || !selection.GetRange(0, &first, &last)) return String();
  LONG id = 0;
  BaseContainer row;
  return list_.GetItemLine(first, &id, &row) ? row.GetString(kColumnName) : String();
}

BaseContainer SMDialog::GetCheckedElements() const {
  BaseContainer checked;
  const LONG count = list_.GetItemCount();
  for (LONG line = 0; line < count; ++line) {
    LONG id = 0;
    BaseContainer row;
    if (list_.GetItemLine(line, &id, &row) && row.GetBool(kColumnChecked))
      checked.SetString(line, row.GetString(kColumnName));
  }
  return checked;
}

void SMDialog::ChangeChecks(Checks checks) {
  const LONG count = list_.GetItemCount();
  for (LONG line = 0; line < count; ++line) {
    LONG id = 0;
    BaseContainer row;
    if (!list_.GetItemLine(line, &id, &row)) continue;
    const Bool inverted = checks == Checks::Inverted && !row.GetBool(kColumnChecked);
    row.SetBool(kColumnChecked, checks == Checks::All || inverted);
    list_.SetItem(id, row);
  }
  list_.DataChanged();
}

}  // namespace stagemarks
