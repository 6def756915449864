// Values of gadgets: setting and reading them.
#include <algorithm>
#include <cmath>

#include "engine/dialog/DialogBody.h"

namespace engine {

host::Real ClampToRange(const Gadget& field, host::Real value) {
  return std::isnan(value) ? field.min : std::clamp(value, field.min, field.max);
}

}  // namespace engine

namespace host {

using engine::Choice;
using engine::Gadget;
using engine::GadgetKind;

namespace {

Bool HoldsNumber(const Gadget* gadget) {
  return gadget && (gadget->kind == GadgetKind::Checkbox || gadget->kind == GadgetKind::ComboBox ||
                    gadget->kind == GadgetKind::NumberField);
}

Bool HasChoice(const Gadget& combo, LONG id) {
  return std::any_of(combo.choices.begin(), combo.choices.end(),
                     [id](const Choice& choice) { return choice.id == id; });
}

String CurrentChoice(const Gadget& combo) {
  const LONG id = combo.value.GetLong();
  for (const Choice& choice : combo.choices) {
    if (choice.id == id) return choice.text;
  }
  return String();
}

// False for a value that the gadget cannot take.
Bool TakeNumber(Gadget& gadget, Real value) {
  switch (gadget.kind) {
    case GadgetKind::Checkbox:
      gadget.value = GeData(LONG(value != 0));
      return TRUE;
    case GadgetKind::ComboBox:
      if (!HasChoice(gadget, static_cast<LONG>(value))) return FALSE;
      gadget.value = GeData(static_cast<LONG>(value));
      return TRUE;
    case GadgetKind::NumberField:
      gadget.value = GeData(engine::ClampToRange(gadget, value));
      return TRUE;
    default:
      return FALSE;
  }
}

// The whole part of a number, within what a LONG can hold.
LONG Truncated(Real value) {
  return static_cast<LONG>(std::clamp(value, -2147483648.0, 2147483647.0));
}

}  // namespace

Bool GeDialog::SetBool(LONG id, Bool value) {
  Gadget* gadget = body_->Find(id);
  return gadget && gadget->kind == GadgetKind::Checkbox && SetLong(id, value ? 1 : 0);
}

Bool GeDialog::SetLong(LONG id, LONG value) {
  Gadget* gadget = body_->Find(id);
  if (!gadget || !TakeNumber(*gadget, value)) return FALSE;
  engine::TellChanged(*this, gadget);
  return TRUE;
}

Bool GeDialog::SetReal(LONG id, Real value, Real min, Real max, Real step, LONG format) {
  Gadget* gadget = body_->Find(id);
  if (!gadget || gadget->kind != GadgetKind::NumberField || !(min <= max)) return FALSE;
  gadget->min = min;
  gadget->max = max;
  gadget->step = step;
  gadget->format = format;
  TakeNumber(*gadget, value);
  engine::TellChanged(*this, gadget);
  return TRUE;
}

Bool GeDialog::SetString(LONG id, const String& value) {
  Gadget* gadget = body_->Find(id);
  if (!gadget) return FALSE;
  switch (gadget->kind) {
    case GadgetKind::EditText:
      gadget->value = GeData(value);
      break;
    case GadgetKind::Group:
    case GadgetKind::Button:
    case GadgetKind::Checkbox:
    case GadgetKind::StaticText:
      gadget->text = value;
      break;
    default:
      return FALSE;
  }
  engine::TellChanged(*this, gadget);
  return TRUE;
}

Bool GeDialog::GetBool(LONG id, Bool& value) const {
  Real number = 0;
  if (!GetReal(id, number)) return FALSE;
  value = number != 0;
  return TRUE;
}

Bool GeDialog::GetLong(LONG id, LONG& value) const {
  Real number = 0;
  if (!GetReal(id, number)) return FALSE;
  value = Truncated(number);
  return TRUE;
}

// The getters of other kinds of numbers stand on it, and convert.
Bool GeDialog::GetReal(LONG id, Real& value) const {
  const Gadget* gadget = body_->Find(id);
  if (!HoldsNumber(gadget)) return FALSE;
  value = gadget->value.GetReal();
  return TRUE;
}

Bool GeDialog::GetString(LONG id, String& value) const {
  const Gadget* gadget = body_->Find(id);
  if (!gadget) return FALSE;
  switch (gadget->kind) {
    case GadgetKind::EditText:
      value = gadget->value.GetString();
      return TRUE;
    case GadgetKind::ComboBox:
      value = CurrentChoice(*gadget);
      return TRUE;
    case GadgetKind::Group:
    case GadgetKind::Button:
    case GadgetKind::Checkbox:
    case GadgetKind::StaticText:
      value = gadget->text;
      return TRUE;
    default:
      return FALSE;
  }
}

Bool GeDialog::Enable(LONG id, Bool enabled) {
  Gadget* gadget = body_->Find(id);
  if (!gadget) return FALSE;
  gadget->enabled = enabled;
  engine::TellChanged(*this, gadget);
  return TRUE;
}

}  // namespace host
