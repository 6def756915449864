// A dialog as a person would see it, in text.
#include <algorithm>

#include "engine/dialog/DialogBody.h"
#include "engine/dialog/TextArea.h"

namespace engine {

namespace {

// Pixels of one terminal column and line, to turn the spaces of a layout into blanks.
constexpr host::LONG kColumnPixels = 8;
constexpr host::LONG kLinePixels = 16;
// Limits that keep a dialog readable in a terminal of 100 columns.
constexpr std::size_t kWidestCell = 40;
constexpr std::size_t kWidestField = 60;
constexpr std::size_t kWidestMenus = 92;
constexpr std::size_t kNarrowestList = 36;
constexpr std::size_t kLowestList = 5;

std::string TextOf(const host::String& text) { return Printable(text.View()); }

std::size_t Rounded(host::LONG pixels, host::LONG unit) {
  return pixels <= 0 ? 0
                     : static_cast<std::size_t>(std::min<host::LONG>(pixels, 400) + unit / 2) /
                           static_cast<std::size_t>(unit);
}

// One blank line sets groups apart; more would only make the dialog long.
std::size_t BlankLines(host::LONG pixels) {
  return std::min<std::size_t>(1, Rounded(pixels, kLinePixels));
}

// The width of a gadget in columns as its layout asks for, 0 where it does not.
std::size_t AskedColumns(const Gadget& gadget) {
  const host::LONG columns =
      gadget.width >= host::SizeChr(1) ? gadget.width >> 16 : gadget.width / kColumnPixels;
  return columns <= 0 ? 0 : static_cast<std::size_t>(columns);
}

std::string NumberText(const Gadget& field) {
  const host::Real value = field.value.GetReal();
  const bool whole =
      field.format == host::FORMAT_LONG && value > -2147483648.0 && value < 2147483648.0;
  return TextOf(whole ? host::LongToString(static_cast<host::LONG>(value))
                      : host::RealToString(value));
}

std::string ChoiceText(const Gadget& combo) {
  const host::LONG id = combo.value.GetLong();
  for (const Choice& choice : combo.choices) {
    if (choice.id == id) return TextOf(choice.text);
  }
  return "";
}

std::string EditFieldText(const Gadget& field) {
  const std::size_t width = std::clamp<std::size_t>(AskedColumns(field), 20, kWidestField);
  return PadRight(Shortened(TextOf(field.value.GetString()), width), width);
}

// --- Lists.

std::string CellText(const Row& row, const Column& column) {
  if (column.kind == host::LV_COLUMN_CHECKBOX) return row.values.GetBool(column.id) ? "[x]" : "[ ]";
  const host::GeData value = row.values.GetData(column.id);
  if (value.GetType() == host::DA_LONG) return TextOf(host::LongToString(value.GetLong()));
  if (value.GetType() == host::DA_REAL) return TextOf(host::RealToString(value.GetReal()));
  return TextOf(value.GetString());
}

TextArea ListBlock(const Gadget& list, std::size_t widestCell) {
  std::vector<TextArea> cells;
  for (std::size_t line = 0; line < list.listRows.size(); ++line) {
    cells.push_back(
        TextArea::Of(list.selection.IsSelected(static_cast<host::LONG>(line)) ? "▸" : " "));
    for (const Column& column : list.listColumns) {
      cells.push_back(TextArea::Of(Shortened(CellText(list.listRows[line], column), widestCell)));
    }
  }
  return InGrid(cells, list.listColumns.size() + 1, 1, 0);
}

TextArea ListGadgetBlock(const Gadget& list) {
  TextArea rows = ListBlock(list, kWidestCell);
  if (list.listRows.empty()) rows.AddLine("  (empty)");
  while (rows.Height() < kLowestList) rows.AddLine("");
  rows.width = std::max(rows.width, std::min(AskedColumns(list), kNarrowestList));
  return Framed(rows, "");
}

TextArea ImageBlock(const Gadget& button) {
  const std::size_t width = std::clamp<std::size_t>(AskedColumns(button) / 2, 12, 24);
  const std::string name =
      button.image.Content() ? TextOf(button.image.GetFileString()) : "(no picture)";
  const std::string label = Shortened(name, width);
  TextArea picture;
  picture.lines.assign(kLowestList, std::string());
  picture.lines[kLowestList / 2] = std::string((width - DisplayWidth(label)) / 2, ' ') + label;
  picture.width = width;
  return Framed(picture, "");
}

// --- Groups.

TextArea LeafBlock(const Gadget& gadget) {
  const std::string blank = gadget.enabled ? " " : "·";
  switch (gadget.kind) {
    case GadgetKind::Button:
      return TextArea::Of("[" + blank + TextOf(gadget.text) + blank + "]");
    case GadgetKind::Checkbox:
      return TextArea::Of((gadget.value.GetBool() ? "[x]" : "[ ]") + blank + TextOf(gadget.text));
    case GadgetKind::StaticText:
      return TextArea::Of(TextOf(gadget.text));
    case GadgetKind::EditText:
      return TextArea::Of("[" + blank + EditFieldText(gadget) + blank + "]");
    case GadgetKind::NumberField:
      return TextArea::Of("[" + blank + PadRight(NumberText(gadget), 6) + "↕]");
    case GadgetKind::ComboBox:
      return TextArea::Of(
          "[" + blank + PadRight(ChoiceText(gadget), std::min(AskedColumns(gadget), kWidestField)) +
          " ▾]");
    case GadgetKind::Separator:
      return TextArea::Of("│");
    case GadgetKind::ListView:
      return ListGadgetBlock(gadget);
    case GadgetKind::BitmapButton:
      return ImageBlock(gadget);
    case GadgetKind::Group:
      break;
  }
  return TextArea();
}

// 0 columns: as many as its rows need.
std::size_t ColumnsOf(const Gadget& group) {
  if (group.columns > 0) return static_cast<std::size_t>(group.columns);
  const std::size_t rows =
      group.rows > 0 ? static_cast<std::size_t>(group.rows) : group.children.size();
  return std::max<std::size_t>(1,
                               (group.children.size() + rows - 1) / std::max<std::size_t>(1, rows));
}

// Groups lie as deep as a plug-in nests its calls, so this may call itself.
TextArea GadgetBlock(const Gadget& gadget) {
  if (gadget.kind != GadgetKind::Group) return LeafBlock(gadget);
  std::vector<TextArea> blocks;
  for (const auto& child : gadget.children) blocks.push_back(GadgetBlock(*child));
  const std::size_t columns = std::min(ColumnsOf(gadget), std::max<std::size_t>(1, blocks.size()));
  TextArea block =
      InGrid(blocks, columns, std::max<std::size_t>(2, Rounded(gadget.spaceX, kColumnPixels)),
             BlankLines(gadget.spaceY));
  if (gadget.text.Content()) block = Framed(block, TextOf(gadget.text));
  return Surrounded(block, Rounded(gadget.borderLeft, kColumnPixels), BlankLines(gadget.borderTop),
                    Rounded(gadget.borderRight, kColumnPixels), BlankLines(gadget.borderBottom));
}

// --- Menus.

std::string EntryText(const MenuEntry& entry) {
  const std::string text =
      (entry.enabled ? "" : "·") + TextOf(entry.text) + (entry.enabled ? "" : "·");
  return (entry.checked ? "✓ " : "  ") + text;
}

TextArea MenuBlock(const MenuEntry& entry) {
  TextArea block = TextArea::Of(entry.separator ? "  ───" : EntryText(entry));
  for (const MenuEntry& child : entry.children) block.AddBelow(MenuBlock(child), 2);
  return block;
}

// Menus side by side, as many as fit in one row.
TextArea MenusBlock(const std::vector<MenuEntry>& menus) {
  TextArea result;
  std::vector<TextArea> row;
  std::size_t width = 0;
  const auto finishRow = [&] {
    if (row.empty()) return;
    if (result.Height() > 0) result.AddLine("");
    result.AddBelow(InGrid(row, row.size(), 2, 0));
    row.clear();
    width = 0;
  };
  for (const MenuEntry& menu : menus) {
    TextArea block = MenuBlock(menu);
    if (width > 0 && width + 2 + block.width > kWidestMenus) finishRow();
    width += block.width + 2;
    row.push_back(std::move(block));
  }
  finishRow();
  return result;
}

}  // namespace

std::string DialogAsText(const host::GeDialog& dialog) {
  TextArea content = GadgetBlock(DialogRoot(dialog));
  const TextArea menus = MenusBlock(DialogMenus(dialog));
  if (menus.Height() > 0) {
    content.AddLine(Repeated("─", std::max(content.width, menus.width)));
    content.AddBelow(menus);
  }
  return Joined(Framed(content, TextOf(DialogTitle(dialog))));
}

std::string ListAsText(const host::GeDialog& dialog, host::LONG id, std::size_t widestCell) {
  const Gadget* list = FindGadget(dialog, id);
  if (!list || list->kind != GadgetKind::ListView) return "";
  return Joined(ListBlock(*list, widestCell));
}

}  // namespace engine
