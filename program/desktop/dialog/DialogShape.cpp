#include "program/desktop/dialog/DialogShape.h"

namespace desktop {

namespace {

void Add(std::string& shape, std::initializer_list<host::LONG> numbers) {
  for (const host::LONG number : numbers) shape.append(std::to_string(number)).push_back(' ');
}

void AddText(std::string& shape, const host::String& text) {
  const std::string bytes = text.ToUtf8();
  shape.append(std::to_string(bytes.size())).append(":").append(bytes);
}

void AddGadget(std::string& shape, const engine::Gadget& gadget) {
  Add(shape,
      {static_cast<host::LONG>(gadget.kind), gadget.id, gadget.flags, gadget.width, gadget.height});
  if (gadget.kind != engine::GadgetKind::Group) return;
  Add(shape, {gadget.columns, gadget.rows, gadget.spaceX, gadget.spaceY, gadget.enabled});
  Add(shape, {gadget.borderLeft, gadget.borderTop, gadget.borderRight, gadget.borderBottom});
  Add(shape, {static_cast<host::LONG>(gadget.children.size())});
  AddText(shape, gadget.text);
}

void AddEntry(std::string& shape, const engine::MenuEntry& entry) {
  Add(shape, {entry.id, entry.separator, static_cast<host::LONG>(entry.children.size())});
  AddText(shape, entry.text);
}

}  // namespace

std::string ShapeOf(const host::GeDialog& dialog) {
  std::string shape;
  std::vector<const engine::Gadget*> open = {&engine::DialogRoot(dialog)};
  while (!open.empty()) {
    const engine::Gadget* gadget = open.back();
    open.pop_back();
    AddGadget(shape, *gadget);
    for (const auto& child : gadget->children) open.push_back(child.get());
  }
  return shape;
}

std::string ShapeOfMenus(const host::GeDialog& dialog) {
  std::string shape;
  std::vector<const engine::MenuEntry*> open;
  for (const engine::MenuEntry& entry : engine::DialogMenus(dialog)) open.push_back(&entry);
  while (!open.empty()) {
    const engine::MenuEntry* entry = open.back();
    open.pop_back();
    AddEntry(shape, *entry);
    for (const engine::MenuEntry& child : entry->children) open.push_back(&child);
  }
  return shape;
}

}  // namespace desktop
