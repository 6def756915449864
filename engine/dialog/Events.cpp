// The acts of a person in a dialog: the gadget's own value changes, then the dialog hears of it.
#include <algorithm>
#include <cmath>

#include "engine/dialog/DialogBody.h"

namespace engine {

namespace {

// The gadget when the dialog is open and the gadget is of that kind and switched on, else null.
Gadget* Usable(host::GeDialog& dialog, host::LONG id, GadgetKind kind) {
  const DialogBody& body = DialogBody::Of(dialog);
  Gadget* gadget = body.open ? body.Find(id) : nullptr;
  return gadget && gadget->kind == kind && gadget->enabled ? gadget : nullptr;
}

bool SendCommand(host::GeDialog& dialog, host::LONG id) {
  host::BaseContainer message;
  message.SetLong(host::BFM_ACTION_ID, id);
  const DialogCall call;
  return dialog.Command(id, message);
}

bool ChangeAndSend(host::GeDialog& dialog, Gadget& gadget, const host::GeData& value) {
  gadget.value = value;
  // Kept, because an observer may have the layout built anew.
  const host::LONG id = gadget.id;
  TellChanged(dialog, &gadget);
  return SendCommand(dialog, id);
}

bool IsCheckboxColumn(const Gadget& list, host::LONG column) {
  return std::any_of(list.listColumns.begin(), list.listColumns.end(), [&](const Column& c) {
    return c.id == column && c.kind == host::LV_COLUMN_CHECKBOX;
  });
}

bool IsLine(const Gadget& list, host::LONG line) {
  return line >= 0 && static_cast<std::size_t>(line) < list.listRows.size();
}

}  // namespace

bool PressButton(host::GeDialog& dialog, host::LONG id) {
  const bool usable =
      Usable(dialog, id, GadgetKind::Button) || Usable(dialog, id, GadgetKind::BitmapButton);
  return usable && SendCommand(dialog, id);
}

bool ChooseMenu(host::GeDialog& dialog, host::LONG id) {
  const MenuEntry* entry = FindMenuEntry(dialog, id);
  return dialog.IsOpen() && entry && entry->enabled && SendCommand(dialog, id);
}

bool SetCheckbox(host::GeDialog& dialog, host::LONG id, bool checked) {
  Gadget* box = Usable(dialog, id, GadgetKind::Checkbox);
  return box && ChangeAndSend(dialog, *box, host::GeData(host::LONG(checked)));
}

bool TypeText(host::GeDialog& dialog, host::LONG id, const host::String& text) {
  Gadget* field = Usable(dialog, id, GadgetKind::EditText);
  return field && ChangeAndSend(dialog, *field, host::GeData(text));
}

bool TypeNumber(host::GeDialog& dialog, host::LONG id, host::Real number) {
  Gadget* field = Usable(dialog, id, GadgetKind::NumberField);
  return field && !std::isnan(number) &&
         ChangeAndSend(dialog, *field, host::GeData(ClampToRange(*field, number)));
}

bool ChooseFromCombo(host::GeDialog& dialog, host::LONG id, host::LONG choice) {
  Gadget* combo = Usable(dialog, id, GadgetKind::ComboBox);
  if (!combo) return false;
  const bool known = std::any_of(combo->choices.begin(), combo->choices.end(),
                                 [choice](const Choice& c) { return c.id == choice; });
  return known && ChangeAndSend(dialog, *combo, host::GeData(choice));
}

bool SelectLines(host::GeDialog& dialog, host::LONG list, const std::vector<host::LONG>& lines) {
  Gadget* gadget = Usable(dialog, list, GadgetKind::ListView);
  if (!gadget || !std::all_of(lines.begin(), lines.end(),
                              [&](host::LONG line) { return IsLine(*gadget, line); }))
    return false;
  // A person's own selection counts more than one that is remembered for the next rebuild.
  DialogBody::Of(dialog).namesToSelect.erase(list);
  gadget->selection.DeselectAll();
  for (const host::LONG line : lines) gadget->selection.Select(line);
  TellChanged(dialog, gadget);
  return SendCommand(dialog, list);
}

bool ToggleLine(host::GeDialog& dialog, host::LONG list, host::LONG line, host::LONG column) {
  Gadget* gadget = Usable(dialog, list, GadgetKind::ListView);
  if (!gadget || !IsLine(*gadget, line) || !IsCheckboxColumn(*gadget, column)) return false;
  host::BaseContainer& values = gadget->listRows[static_cast<std::size_t>(line)].values;
  values.SetBool(column, !values.GetBool(column));
  TellChanged(dialog, gadget);
  return SendCommand(dialog, list);
}

// Over a copy of the list: a dialog may open, close or destroy others, or itself, in its answer.
void SendCoreMessage(host::LONG id, const host::BaseContainer& message) {
  const DialogCall call;
  for (host::GeDialog* dialog : OpenDialogs()) {
    const DialogBody* body = BodyIfAlive(dialog);
    if (body && body->open) dialog->CoreMessage(id, message);
  }
}

}  // namespace engine
