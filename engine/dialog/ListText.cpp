// A list of a dialog as a person would see it, in text.
#include "engine/dialog/DialogBody.h"
#include "engine/dialog/TerminalText.h"

namespace engine {

namespace {

// Names are a plug-in's, and a terminal obeys control characters.
std::string TextOf(const host::String& text) { return Printable(text.View()); }

std::string CellText(const Row& row, const Column& column) {
  if (column.kind == host::LV_COLUMN_CHECKBOX) return row.values.GetBool(column.id) ? "[x]" : "[ ]";
  const host::GeData value = row.values.GetData(column.id);
  if (value.GetType() == host::DA_LONG) return TextOf(host::LongToString(value.GetLong()));
  if (value.GetType() == host::DA_REAL) return TextOf(host::RealToString(value.GetReal()));
  return TextOf(value.GetString());
}

}  // namespace

std::string ListAsText(const host::GeDialog& dialog, host::LONG id, std::size_t widestCell) {
  const Gadget* list = FindGadget(dialog, id);
  if (!list || list->kind != GadgetKind::ListView) return "";
  std::vector<std::string> cells;
  for (std::size_t line = 0; line < list->listRows.size(); ++line) {
    const bool selected = list->selection.IsSelected(static_cast<host::LONG>(line));
    cells.push_back(selected ? "\u25B8" : " ");
    for (const Column& column : list->listColumns)
      cells.push_back(Shortened(CellText(list->listRows[line], column), widestCell));
  }
  return LinedUp(cells, list->listColumns.size() + 1);
}

}  // namespace engine
