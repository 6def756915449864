// Building the menu bar and its marks.
#include "engine/dialog/DialogBody.h"

namespace host {

using engine::MenuEntry;

void GeDialog::MenuFlushAll() {
  body_->menus.clear();
  body_->menuPath.clear();
  engine::TellChanged(*this, nullptr);
}

Bool GeDialog::MenuSubBegin(const String& text) {
  std::vector<MenuEntry>& entries = body_->MenuBeingBuilt();
  entries.emplace_back().text = text;
  body_->menuPath.push_back(entries.size() - 1);
  return TRUE;
}

Bool GeDialog::MenuSubEnd() {
  if (body_->menuPath.empty()) return FALSE;
  body_->menuPath.pop_back();
  return TRUE;
}

Bool GeDialog::MenuAddString(LONG id, const String& text) {
  if (id == 0 || engine::FindEntry(body_->menus, id)) return FALSE;
  MenuEntry& entry = body_->MenuBeingBuilt().emplace_back();
  entry.id = id;
  entry.text = text;
  return TRUE;
}

Bool GeDialog::MenuAddSeparator() {
  body_->MenuBeingBuilt().emplace_back().separator = true;
  return TRUE;
}

Bool GeDialog::MenuFinished() {
  // Sub-menus that were left open are closed, and the plug-in is told.
  const Bool closed = body_->menuPath.empty();
  body_->menuPath.clear();
  engine::TellChanged(*this, nullptr);
  return closed;
}

Bool GeDialog::MenuInitString(LONG id, Bool enabled, Bool checked) {
  MenuEntry* entry = engine::FindEntry(body_->menus, id);
  if (!entry) return FALSE;
  entry->enabled = enabled;
  entry->checked = checked;
  engine::TellChanged(*this, nullptr);
  return TRUE;
}

}  // namespace host
