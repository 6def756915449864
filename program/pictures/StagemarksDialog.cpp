#include "program/pictures/StagemarksDialog.h"

#include <algorithm>
#include <cstdio>
#include <optional>
#include <unordered_set>

#include "program/pictures/DialogLabels.h"
#include "program/pictures/UndoableCommand.h"

namespace pictures {

using engine::Gadget;
using engine::GadgetKind;
using engine::MenuEntry;
using host::LONG;

namespace {

// The columns in display order: marker, check box, name, date.
constexpr std::size_t kMarker = 0;
constexpr std::size_t kChecked = 1;
constexpr std::size_t kName = 2;
constexpr std::size_t kDate = 3;
constexpr std::size_t kColumns = 4;
constexpr std::size_t kWidestName = 56;

void Collect(const Gadget& gadget, GadgetKind kind, std::vector<const Gadget*>& found) {
  if (gadget.kind == kind) found.push_back(&gadget);
  for (const auto& child : gadget.children) Collect(*child, kind, found);
}

std::vector<const Gadget*> AllOf(const host::GeDialog& dialog, GadgetKind kind) {
  std::vector<const Gadget*> found;
  Collect(engine::DialogRoot(dialog), kind, found);
  return found;
}

// Labels have blanks around them to set their width.
std::string Trimmed(const std::string& text) {
  const auto first = text.find_first_not_of(' ');
  return first == std::string::npos ? ""
                                    : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

const Gadget* Labeled(const host::GeDialog& dialog, GadgetKind kind, const std::string& label) {
  for (const Gadget* gadget : AllOf(dialog, kind)) {
    if (label.empty() || Trimmed(gadget->text.ToUtf8()) == label) return gadget;
  }
  return nullptr;
}

const MenuEntry* EntryLabeled(const std::vector<MenuEntry>& entries, const std::string& label) {
  for (const MenuEntry& entry : entries) {
    if (entry.id != 0 && entry.text.ToUtf8() == label) return &entry;
    if (const MenuEntry* below = EntryLabeled(entry.children, label)) return below;
  }
  return nullptr;
}

}  // namespace

// An empty gadget where it is missing, so that all that reads rows finds none and needs no question
// of its own.
const Gadget& StagemarksDialog::List() const {
  static const Gadget none;
  const auto lists = AllOf(*dialog_, GadgetKind::ListView);
  return lists.empty() || lists.front()->listColumns.size() != kColumns ? none : *lists.front();
}

bool StagemarksDialog::Fits() const {
  return List().listColumns.size() == kColumns && Labeled(*dialog_, GadgetKind::Button, kLoad);
}

const Gadget* StagemarksDialog::Find(GadgetKind kind, const std::string& label) const {
  return Labeled(*dialog_, kind, label);
}

std::vector<Mark> StagemarksDialog::Marks() const {
  std::vector<Mark> marks;
  const Gadget& list = List();
  for (const engine::Row& row : list.listRows) {
    const auto text = [&](std::size_t column) {
      return row.values.GetString(list.listColumns[column].id).ToUtf8();
    };
    marks.push_back({text(kName), Trimmed(text(kDate)),
                     row.values.GetBool(list.listColumns[kChecked].id),
                     !Trimmed(text(kMarker)).empty()});
  }
  return marks;
}

bool StagemarksDialog::Has(const std::string& name) const {
  const auto marks = Marks();
  return std::any_of(marks.begin(), marks.end(),
                     [&](const Mark& mark) { return mark.name == name; });
}

std::string StagemarksDialog::Current() const {
  for (const Mark& mark : Marks()) {
    if (mark.current) return mark.name;
  }
  return "";
}

std::string StagemarksDialog::TypedName() const {
  const auto fields = AllOf(*dialog_, GadgetKind::EditText);
  return fields.empty() ? "" : fields.front()->value.GetString().ToUtf8();
}

bool StagemarksDialog::IsTicked(const std::string& checkbox) const {
  const Gadget* gadget = Labeled(*dialog_, GadgetKind::Checkbox, checkbox);
  return gadget && gadget->value.GetLong() != 0;
}

bool StagemarksDialog::TypeName(const std::string& name) {
  const auto fields = AllOf(*dialog_, GadgetKind::EditText);
  return !fields.empty() &&
         engine::TypeText(*dialog_, fields.front()->id, host::String(std::string_view(name)));
}

// The undo step closes behind the event: what the plug-in stored belongs to it.
bool StagemarksDialog::Press(const std::string& button) {
  const Gadget* gadget = Labeled(*dialog_, GadgetKind::Button, button);
  if (!gadget) return false;
  std::optional<UndoableCommand> step;
  if (services_) step.emplace(*services_, *dialog_, button);
  return engine::PressButton(*dialog_, gadget->id);
}

bool StagemarksDialog::Choose(const std::string& menuEntry) {
  const MenuEntry* entry = EntryLabeled(engine::DialogMenus(*dialog_), menuEntry);
  if (!entry) return false;
  std::optional<UndoableCommand> step;
  if (services_) step.emplace(*services_, *dialog_, menuEntry);
  return engine::ChooseMenu(*dialog_, entry->id);
}

bool StagemarksDialog::Tick(const std::string& checkbox, bool on) {
  const Gadget* gadget = Labeled(*dialog_, GadgetKind::Checkbox, checkbox);
  return gadget && engine::SetCheckbox(*dialog_, gadget->id, on);
}

bool StagemarksDialog::ChooseLayout(const std::string& entry) {
  for (const Gadget* combo : AllOf(*dialog_, GadgetKind::ComboBox)) {
    for (const engine::Choice& choice : combo->choices) {
      if (choice.text.ToUtf8() == entry)
        return engine::ChooseFromCombo(*dialog_, combo->id, choice.id);
    }
  }
  return false;
}

std::string StagemarksDialog::ChosenLayout() const {
  for (const Gadget* combo : AllOf(*dialog_, GadgetKind::ComboBox)) {
    for (const engine::Choice& choice : combo->choices) {
      if (choice.id == combo->value.GetLong()) return choice.text.ToUtf8();
    }
  }
  return "";
}

// The dialog has two number fields and both are these, in this order.
bool StagemarksDialog::TypeFrames(int from, int to) {
  const auto fields = AllOf(*dialog_, GadgetKind::NumberField);
  return fields.size() == 2 && engine::TypeNumber(*dialog_, fields[0]->id, from) &&
         engine::TypeNumber(*dialog_, fields[1]->id, to);
}

bool StagemarksDialog::Select(const std::string& name) {
  const auto marks = Marks();
  const auto it =
      std::find_if(marks.begin(), marks.end(), [&](const Mark& mark) { return mark.name == name; });
  return it != marks.end() &&
         engine::SelectLines(*dialog_, List().id, {static_cast<LONG>(it - marks.begin())});
}

std::vector<std::string> StagemarksDialog::SelectedNames() const {
  std::vector<std::string> names;
  const Gadget& list = List();
  for (std::size_t line = 0; line < list.listRows.size(); ++line) {
    if (!list.selection.IsSelected(static_cast<LONG>(line))) continue;
    names.push_back(list.listRows[line].values.GetString(list.listColumns[kName].id).ToUtf8());
  }
  return names;
}

bool StagemarksDialog::SelectNames(const std::vector<std::string>& names) {
  const std::unordered_set<std::string> wanted(names.begin(), names.end());
  const auto marks = Marks();
  std::vector<LONG> lines;
  for (std::size_t line = 0; line < marks.size(); ++line) {
    if (wanted.count(marks[line].name) > 0) lines.push_back(static_cast<LONG>(line));
  }
  return engine::SelectLines(*dialog_, List().id, lines);
}

// Unchecked by the menu entry, one event instead of one for each row. No toggle moves a line.
bool StagemarksDialog::CheckOnly(const std::vector<std::string>& names) {
  if (!Choose(kUncheckAll)) return false;
  const std::unordered_set<std::string> wanted(names.begin(), names.end());
  const auto marks = Marks();
  for (std::size_t line = 0; line < marks.size(); ++line) {
    if (wanted.count(marks[line].name) == 0) continue;
    if (!engine::ToggleLine(*dialog_, List().id, static_cast<LONG>(line),
                            List().listColumns[kChecked].id))
      return false;
  }
  return true;
}

std::vector<std::string> StagemarksDialog::CheckedNames() const {
  std::vector<std::string> names;
  for (Mark& mark : Marks()) {
    if (mark.checked) names.push_back(std::move(mark.name));
  }
  return names;
}

std::vector<std::pair<std::string, bool>> StagemarksDialog::Options() const {
  std::vector<std::pair<std::string, bool>> options;
  for (const MenuEntry& menu : engine::DialogMenus(*dialog_)) {
    if (menu.text.ToUtf8() != "Options") continue;
    bool afterSeparator = false;  // the entry that saves the options stands alone above it
    for (const MenuEntry& entry : menu.children) {
      if (afterSeparator && !entry.separator)
        options.emplace_back(entry.text.ToUtf8(), entry.checked);
      afterSeparator = afterSeparator || entry.separator;
    }
  }
  return options;
}

std::string StagemarksDialog::ListText() const {
  std::string text = engine::ListAsText(*dialog_, List().id, kWidestName);
  while (!text.empty() && text.back() == '\n') text.pop_back();
  return text;
}

// The last number is the largest that the plug-in's fields hold.
engine::Result<FrameRange> ReadFrameRange(const std::string& text) {
  constexpr int kLast = 300000;
  int from = 0;
  int to = 0;
  char rest = 0;
  const bool read = std::sscanf(text.c_str(), "%7d:%7d%c", &from, &to, &rest) == 2;
  if (read && from >= 0 && from <= to && to <= kLast) return FrameRange(from, to);
  return engine::Result<FrameRange>::Failure(
      "\"" + text + "\" is no frame range; 0:90 is one, up to " + std::to_string(kLast) + ".");
}

}  // namespace pictures
