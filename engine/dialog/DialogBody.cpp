#include "engine/dialog/DialogBody.h"

#include <algorithm>

namespace engine {

Gadget* DialogBody::Find(host::LONG id) const {
  const auto it = gadgets.find(id);
  return it == gadgets.end() ? nullptr : it->second;
}

// Gadgets stand on the heap one by one: pointers to them live in groups, tables and buttons while
// further ones are added.
Gadget* DialogBody::Add(GadgetKind kind, host::LONG id, host::LONG flags, host::LONG width,
                        host::LONG height, const host::String& text) {
  if (id != 0 && gadgets.count(id)) return nullptr;
  Gadget& group = openGroups.empty() ? root : *openGroups.back();
  group.children.push_back(std::make_unique<Gadget>());
  Gadget* gadget = group.children.back().get();
  gadget->kind = kind;
  gadget->id = id;
  gadget->flags = flags;
  gadget->width = width;
  gadget->height = height;
  gadget->text = text;
  if (id != 0) gadgets[id] = gadget;
  return gadget;
}

host::BitmapButtonCustomGui* DialogBody::AddBitmapButton(host::GeDialog& dialog, Gadget& gadget) {
  auto gui = std::make_unique<host::BitmapButtonCustomGui>();
  gui->dialog_ = &dialog;
  gui->gadget_ = &gadget;
  return (bitmapButtons[gadget.id] = std::move(gui)).get();
}

// By indices from the top: pointers into the lists would not live while entries are added.
std::vector<MenuEntry>& DialogBody::MenuBeingBuilt() {
  std::vector<MenuEntry>* entries = &menus;
  for (const std::size_t index : menuPath) entries = &(*entries)[index].children;
  return *entries;
}

void DialogBody::ClearLayout() {
  gadgets.clear();
  bitmapButtons.clear();
  namesToSelect.clear();
  openGroups.clear();
  root = Gadget();
  menus.clear();
  menuPath.clear();
}

DialogWorld& DialogWorld::Get() {
  static DialogWorld world;
  return world;
}

DialogBody* BodyIfAlive(host::GeDialog* dialog) {
  return DialogWorld::Get().IsAlive(dialog) ? &DialogBody::Of(*dialog) : nullptr;
}

namespace {

// Goes over a copy: an observer may take itself off the list.
template <class Tell>
void ForEachObserver(const Tell& tell) {
  const std::vector<DialogObserver*> observers = DialogWorld::Get().observers;
  for (DialogObserver* observer : observers) {
    const auto& now = DialogWorld::Get().observers;
    if (std::find(now.begin(), now.end(), observer) != now.end()) tell(*observer);
  }
}

}  // namespace

void TellOpened(host::GeDialog& dialog) {
  ForEachObserver([&](DialogObserver& observer) { observer.DialogOpened(dialog); });
}

void TellClosed(host::GeDialog& dialog) {
  ForEachObserver([&](DialogObserver& observer) { observer.DialogClosed(dialog); });
}

void TellChanged(host::GeDialog& dialog, const Gadget* gadget) {
  const DialogBody& body = DialogBody::Of(dialog);
  if (!body.open || body.opening) return;
  ForEachObserver([&](DialogObserver& observer) { observer.DialogChanged(dialog, gadget); });
}

void AddDialogObserver(DialogObserver& observer) {
  DialogWorld::Get().observers.push_back(&observer);
}

void RemoveDialogObserver(DialogObserver& observer) {
  auto& observers = DialogWorld::Get().observers;
  observers.erase(std::remove(observers.begin(), observers.end(), &observer), observers.end());
}

std::vector<host::GeDialog*> OpenDialogs() { return DialogWorld::Get().open; }
host::LONG DialogPluginId(const host::GeDialog& dialog) { return DialogBody::Of(dialog).pluginId; }
host::String DialogTitle(const host::GeDialog& dialog) { return DialogBody::Of(dialog).title; }
const Gadget& DialogRoot(const host::GeDialog& dialog) { return DialogBody::Of(dialog).root; }
const std::vector<MenuEntry>& DialogMenus(const host::GeDialog& dialog) {
  return DialogBody::Of(dialog).menus;
}
const Gadget* FindGadget(const host::GeDialog& dialog, host::LONG id) {
  return DialogBody::Of(dialog).Find(id);
}

const MenuEntry* FindMenuEntry(const host::GeDialog& dialog, host::LONG id) {
  return FindEntry(DialogBody::Of(dialog).menus, id);
}

bool InsideDialogCall() { return DialogWorld::Get().callDepth > 0; }

}  // namespace engine
