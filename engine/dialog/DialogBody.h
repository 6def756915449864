// DialogBody: what a GeDialog holds inside, and DialogWorld: what all dialogs of the process share
// (which are alive, which are open, who watches). Each GeDialog owns its body. Main thread.
#pragma once

#include <unordered_set>

#include "engine/dialog/Dialogs.h"

namespace engine {

struct DialogBody {
  Gadget root;
  std::vector<Gadget*> openGroups;  // innermost last; the root is not among them
  std::unordered_map<host::LONG, Gadget*> gadgets;
  std::unordered_map<host::LONG, std::unique_ptr<host::BitmapButtonCustomGui>> bitmapButtons;
  // Of the rows that were removed, by list
  std::unordered_map<host::LONG, std::vector<host::String>> namesToSelect;
  std::vector<MenuEntry> menus;
  std::vector<std::size_t> menuPath;  // of the sub-menu being built: index at each level
  host::String title;
  host::LONG pluginId = 0;
  bool laidOut = false;
  bool opening = false;
  bool open = false;

  static DialogBody& Of(host::GeDialog& dialog) { return *dialog.body_; }
  static const DialogBody& Of(const host::GeDialog& dialog) { return *dialog.body_; }

  Gadget* Find(host::LONG id) const;
  // Appends a gadget to the open group. Null when `id` is taken; ID 0 is no ID and never taken.
  Gadget* Add(GadgetKind kind, host::LONG id, host::LONG flags, host::LONG width, host::LONG height,
              const host::String& text);
  // A bitmap button gadget with the object that the plug-in works on.
  host::BitmapButtonCustomGui* AddBitmapButton(host::GeDialog& dialog, Gadget& gadget);
  // The entries of the sub-menu being built, or of the menu bar.
  std::vector<MenuEntry>& MenuBeingBuilt();
  // Forgets all gadgets and menus.
  void ClearLayout();
};

struct DialogWorld {
  std::unordered_set<const host::GeDialog*> alive;
  std::vector<host::GeDialog*> open;
  std::vector<DialogObserver*> observers;
  int callDepth = 0;

  static DialogWorld& Get();
  bool IsAlive(const host::GeDialog* dialog) const { return alive.count(dialog) > 0; }
};

// The body of a dialog that may be gone already: then null.
DialogBody* BodyIfAlive(host::GeDialog* dialog);
// The entry with that ID among `entries` and below, or null. `Entries` is a vector of menu entries,
// const or not.
template <class Entries>
auto FindEntry(Entries& entries, host::LONG id) -> decltype(entries.data()) {
  for (auto& entry : entries) {
    if (id != 0 && entry.id == id) return &entry;
    if (auto* below = FindEntry(entry.children, id)) return below;
  }
  return nullptr;
}

void TellOpened(host::GeDialog& dialog);
void TellClosed(host::GeDialog& dialog);
// Only for a dialog that is open and not just filling itself.
void TellChanged(host::GeDialog& dialog, const Gadget* gadget);

// Marks that plug-in code of a dialog is running.
class DialogCall {
 public:
  DialogCall() { ++DialogWorld::Get().callDepth; }
  DialogCall(const DialogCall&) = delete;
  DialogCall& operator=(const DialogCall&) = delete;
  ~DialogCall() { --DialogWorld::Get().callDepth; }
};

// The value of a number field as its range allows it; the lower end for what is no number.
host::Real ClampToRange(const Gadget& field, host::Real value);

}  // namespace engine
