// Building the gadget tree.
#include <limits>

#include "engine/dialog/DialogBody.h"

namespace host {

using engine::DialogBody;
using engine::Gadget;
using engine::GadgetKind;

namespace {

Gadget* AddGadget(GeDialog& dialog, GadgetKind kind, LONG id, LONG flags, LONG width, LONG height,
                  const String& text) {
  Gadget* gadget = DialogBody::Of(dialog).Add(kind, id, flags, width, height, text);
  if (gadget) engine::TellChanged(dialog, nullptr);
  return gadget;
}

Gadget* InnermostGroup(DialogBody& body) {
  return body.openGroups.empty() ? nullptr : body.openGroups.back();
}

}  // namespace

Bool GeDialog::GroupBegin(LONG id, LONG flags, LONG columns, LONG rows, const String& title, LONG) {
  Gadget* group = AddGadget(*this, GadgetKind::Group, id, flags, 0, 0, title);
  if (!group) return FALSE;
  group->columns = columns;
  group->rows = rows;
  body_->openGroups.push_back(group);
  return TRUE;
}

Bool GeDialog::GroupEnd() {
  if (body_->openGroups.empty()) return FALSE;
  body_->openGroups.pop_back();
  return TRUE;
}

Bool GeDialog::GroupSpace(LONG x, LONG y) {
  Gadget* group = InnermostGroup(*body_);
  if (!group) return FALSE;
  group->spaceX = x;
  group->spaceY = y;
  return TRUE;
}

Bool GeDialog::GroupBorderSpace(LONG left, LONG top, LONG right, LONG bottom) {
  Gadget* group = InnermostGroup(*body_);
  if (!group) return FALSE;
  group->borderLeft = left;
  group->borderTop = top;
  group->borderRight = right;
  group->borderBottom = bottom;
  return TRUE;
}

Bool GeDialog::AddButton(LONG id, LONG flags, LONG width, LONG height, const String& text) {
  return AddGadget(*this, GadgetKind::Button, id, flags, width, height, text) != nullptr;
}

Bool GeDialog::AddCheckbox(LONG id, LONG flags, LONG width, LONG height, const String& text) {
  Gadget* box = AddGadget(*this, GadgetKind::Checkbox, id, flags, width, height, text);
  if (box) box->value = GeData(LONG(0));
  return box != nullptr;
}

Bool GeDialog::AddStaticText(LONG id, LONG flags, LONG width, LONG height, const String& text,
                             LONG) {
  return AddGadget(*this, GadgetKind::StaticText, id, flags, width, height, text) != nullptr;
}

Bool GeDialog::AddEditText(LONG id, LONG flags, LONG width, LONG height) {
  Gadget* field = AddGadget(*this, GadgetKind::EditText, id, flags, width, height, String());
  if (field) field->value = GeData(String());
  return field != nullptr;
}

Bool GeDialog::AddEditNumberArrows(LONG id, LONG flags, LONG width, LONG height) {
  Gadget* field = AddGadget(*this, GadgetKind::NumberField, id, flags, width, height, String());
  if (!field) return FALSE;
  field->value = GeData(Real(0));
  // No range until SetReal gives one.
  field->min = std::numeric_limits<Real>::lowest();
  field->max = std::numeric_limits<Real>::max();
  field->format = FORMAT_REAL;
  return TRUE;
}

Bool GeDialog::AddComboBox(LONG id, LONG flags, LONG width, LONG height) {
  Gadget* combo = AddGadget(*this, GadgetKind::ComboBox, id, flags, width, height, String());
  if (combo) combo->value = GeData(LONG(0));
  return combo != nullptr;
}

Bool GeDialog::AddChild(LONG id, LONG child, const String& text) {
  Gadget* combo = body_->Find(id);
  if (!combo || combo->kind != GadgetKind::ComboBox) return FALSE;
  for (const engine::Choice& choice : combo->choices) {
    if (choice.id == child) return FALSE;
  }
  // A combo box always shows one of its entries: the first, until somebody chooses.
  if (combo->choices.empty()) combo->value = GeData(child);
  combo->choices.push_back({child, text});
  engine::TellChanged(*this, combo);
  return TRUE;
}

Bool GeDialog::AddSeparatorV(LONG height, LONG flags) {
  return AddGadget(*this, GadgetKind::Separator, 0, flags, 0, height, String()) != nullptr;
}

Bool GeDialog::AddListView(LONG id, LONG flags, LONG width, LONG height) {
  return AddGadget(*this, GadgetKind::ListView, id, flags, width, height, String()) != nullptr;
}

BaseCustomGui* GeDialog::AddCustomGui(LONG id, LONG type, const String& name, LONG flags,
                                      LONG width, LONG height, const BaseContainer& settings) {
  if (type != CUSTOMGUI_BITMAPBUTTON || id == 0) return nullptr;
  Gadget* gadget = AddGadget(*this, GadgetKind::BitmapButton, id, flags, width, height, name);
  if (!gadget) return nullptr;
  gadget->settings = settings;
  return body_->AddBitmapButton(*this, *gadget);
}

BaseCustomGui* GeDialog::FindCustomGui(LONG id, LONG type) {
  const auto it = body_->bitmapButtons.find(id);
  return type == CUSTOMGUI_BITMAPBUTTON && it != body_->bitmapButtons.end() ? it->second.get()
                                                                            : nullptr;
}

LONG BaseCustomGui::GetId() const { return gadget_->id; }

}  // namespace host
