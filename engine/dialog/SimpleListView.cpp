// The rows of a list gadget.
#include <map>

#include "engine/dialog/DialogBody.h"

namespace host {

using engine::Column;
using engine::Gadget;
using engine::GadgetKind;
using engine::Row;

namespace {

// The list gadget, or null when the list was never attached or its dialog or gadget is gone.
Gadget* ListOf(GeDialog* dialog, LONG id) {
  engine::DialogBody* body = dialog ? engine::BodyIfAlive(dialog) : nullptr;
  Gadget* gadget = body ? body->Find(id) : nullptr;
  return gadget && gadget->kind == GadgetKind::ListView ? gadget : nullptr;
}

// The name of a row: the text beside its check box, else its first text. Marks before the box
// say something about the row.
String NameOf(const Gadget& list, const Row& row) {
  const Column* name = nullptr;
  bool afterBox = false;
  for (const Column& column : list.listColumns) {
    const bool isText = column.kind == LV_COLUMN_TEXT;
    if (isText && (!name || afterBox)) name = &column;
    if (isText && afterBox) break;
    afterBox = column.kind == LV_COLUMN_CHECKBOX;
  }
  return name ? row.values.GetString(name->id) : String();
}

// Remembers the selected rows by name, except one that goes for good (its line, or -1), and
// deselects them. A plug-in that rebuilds its list removes all rows and sets others under new
// numbers; names are what a person recognizes them by.
void RememberSelected(engine::DialogBody& body, Gadget& list, LONG goes) {
  LONG first = 0;
  LONG last = 0;
  std::vector<String>& names = body.namesToSelect[list.id];
  for (LONG segment = 0; list.selection.GetRange(segment, &first, &last); ++segment) {
    for (LONG line = first; line <= last; ++line) {
      if (line != goes)
        names.push_back(NameOf(list, list.listRows[static_cast<std::size_t>(line)]));
    }
  }
  list.selection.DeselectAll();
}

// O(rows) where something was selected before rows were removed, else nothing.
void SelectRemembered(engine::DialogBody& body, Gadget& list) {
  const auto remembered = body.namesToSelect.find(list.id);
  if (remembered == body.namesToSelect.end()) return;
  // As many of a name as were selected, from the top.
  std::map<String, int> wanted;
  for (const String& name : remembered->second) ++wanted[name];
  body.namesToSelect.erase(remembered);
  for (std::size_t line = 0; line < list.listRows.size() && !wanted.empty(); ++line) {
    const auto it = wanted.find(NameOf(list, list.listRows[line]));
    if (it == wanted.end()) continue;
    list.selection.Select(static_cast<LONG>(line));
    if (--it->second == 0) wanted.erase(it);
  }
}

Bool IsColumnKind(LONG kind) { return kind == LV_COLUMN_CHECKBOX || kind == LV_COLUMN_TEXT; }

// Linear in the rows behind: whoever removes all of them calls RemoveAll.
void RenumberFrom(Gadget& list, std::size_t line) {
  for (; line < list.listRows.size(); ++line) list.lineOfRow[list.listRows[line].id] = line;
}

}  // namespace

Bool SimpleListView::AttachListView(GeDialog* dialog, LONG id) {
  if (!ListOf(dialog, id)) return FALSE;
  dialog_ = dialog;
  id_ = id;
  return TRUE;
}

Bool SimpleListView::SetLayout(LONG count, const BaseContainer& columns) {
  Gadget* list = ListOf(dialog_, id_);
  if (!list || count < 0 || count > columns.GetCount()) return FALSE;
  std::vector<Column> layout;
  for (LONG i = 0; i < count; ++i) {
    layout.push_back({columns.GetIndexId(i), columns.GetIndexData(i).GetLong()});
    if (!IsColumnKind(layout.back().kind)) return FALSE;
  }
  list->listColumns = std::move(layout);
  engine::TellChanged(*dialog_, list);
  return TRUE;
}

// Nothing is told: a list is filled row by row, and DataChanged tells once.
Bool SimpleListView::SetItem(LONG id, const BaseContainer& row) {
  Gadget* list = ListOf(dialog_, id_);
  if (!list || id < 0) return FALSE;
  const auto [it, isNew] = list->lineOfRow.try_emplace(id, list->listRows.size());
  if (isNew) {
    list->listRows.push_back({id, row});
  } else {
    list->listRows[it->second].values = row;
  }
  return TRUE;
}

Bool SimpleListView::GetItem(LONG id, BaseContainer* row) const {
  const Gadget* list = ListOf(dialog_, id_);
  if (!list) return FALSE;
  const auto it = list->lineOfRow.find(id);
  if (it == list->lineOfRow.end()) return FALSE;
  if (row) *row = list->listRows[it->second].values;
  return TRUE;
}

Bool SimpleListView::GetItemLine(LONG line, LONG* id, BaseContainer* row) const {
  const Gadget* list = ListOf(dialog_, id_);
  if (!list || line < 0 || line >= GetItemCount()) return FALSE;
  const Row& found = list->listRows[static_cast<std::size_t>(line)];
  if (id) *id = found.id;
  if (row) *row = found.values;
  return TRUE;
}

LONG SimpleListView::GetItemCount() const {
  const Gadget* list = ListOf(dialog_, id_);
  return list ? static_cast<LONG>(list->listRows.size()) : 0;
}

Bool SimpleListView::RemoveItem(LONG id) {
  Gadget* list = ListOf(dialog_, id_);
  if (!list) return FALSE;
  const auto it = list->lineOfRow.find(id);
  if (it == list->lineOfRow.end()) return FALSE;
  const std::size_t line = it->second;
  RememberSelected(engine::DialogBody::Of(*dialog_), *list, static_cast<LONG>(line));
  list->lineOfRow.erase(it);
  list->listRows.erase(list->listRows.begin() + static_cast<std::ptrdiff_t>(line));
  RenumberFrom(*list, line);
  return TRUE;
}

void SimpleListView::RemoveAll() {
  Gadget* list = ListOf(dialog_, id_);
  if (!list) return;
  RememberSelected(engine::DialogBody::Of(*dialog_), *list, NOTOK);
  list->listRows.clear();
  list->lineOfRow.clear();
}

Bool SimpleListView::GetSelection(BaseSelect* selection) const {
  const Gadget* list = ListOf(dialog_, id_);
  if (!list || !selection) return FALSE;
  *selection = list->selection;
  return TRUE;
}

Bool SimpleListView::SetSelection(const BaseSelect& selection) {
  Gadget* list = ListOf(dialog_, id_);
  if (!list) return FALSE;
  // Only lines that exist can be selected.
  BaseSelect existing;
  LONG first = 0;
  LONG last = 0;
  for (LONG segment = 0; selection.GetRange(segment, &first, &last); ++segment) {
    existing.SelectAll(first < 0 ? 0 : first, last < GetItemCount() ? last : GetItemCount() - 1);
  }
  engine::DialogBody::Of(*dialog_).namesToSelect.erase(id_);
  list->selection = existing;
  engine::TellChanged(*dialog_, list);
  return TRUE;
}

void SimpleListView::DataChanged() {
  Gadget* list = ListOf(dialog_, id_);
  if (!list) return;
  SelectRemembered(engine::DialogBody::Of(*dialog_), *list);
  engine::TellChanged(*dialog_, list);
}

}  // namespace host
