#include "program/desktop/dialog/StatesDialog.h"

#include <QAbstractButton>
#include <QLocale>

#include "program/desktop/dialog/ListView.h"
namespace desktop {

using pictures::StagemarksDialog;

// Asked anew each time, over a handful of dialogs: nobody has to be told when it closes.
host::GeDialog* StatesDialog::Find() const {
  for (const DialogDocks::Known& known : docks_.AllKnown()) {
    if (known.dialog && StagemarksDialog(*known.dialog).Fits()) return known.dialog;
  }
  return nullptr;
}

std::vector<pictures::Mark> StatesDialog::Rows() const {
  host::GeDialog* dialog = Find();
  return dialog ? StagemarksDialog(*dialog).Marks() : std::vector<pictures::Mark>();
}

ListView* StatesDialog::List() const {
  host::GeDialog* dialog = Find();
  const engine::Gadget* list =
      dialog ? StagemarksDialog(*dialog).Find(engine::GadgetKind::ListView) : nullptr;
  DialogView* view = list ? docks_.ViewOf(*dialog) : nullptr;
  return view ? dynamic_cast<ListView*>(view->WidgetOf(list->id)) : nullptr;
}

std::vector<std::string> StatesDialog::Chosen() const {
  host::GeDialog* dialog = Find();
  return dialog ? StagemarksDialog(*dialog).SelectedNames() : std::vector<std::string>();
}

// All parts where the dialog was never open: then a load would apply all, too.
engine::Parts StatesDialog::PartsInForce() const {
  engine::Parts parts = engine::AllParts();
  host::GeDialog* dialog = Find();
  if (!dialog) return parts;
  for (const auto& [label, isOn] : StagemarksDialog(*dialog).Options()) {
    if (const engine::PartRow* row = engine::FindPartByLabel(label))
      parts.set(engine::IndexOf(row->part), isOn);
  }
  return parts;
}

bool StatesDialog::Choose(const std::vector<std::string>& names) const {
  host::GeDialog* dialog = Find();
  return dialog && StagemarksDialog(*dialog).SelectNames(names);
}

// The row is only selected where another is: selecting writes the name into the field.
bool StatesDialog::Press(const std::string& name, const char* label) const {
  host::GeDialog* dialog = Find();
  if (!dialog) return false;
  StagemarksDialog states(*dialog);
  if (states.SelectedNames() != std::vector{name} && !states.Select(name)) return false;
  const engine::Gadget* gadget = states.Find(engine::GadgetKind::Button, label);
  DialogView* view = docks_.ViewOf(*dialog);
  auto* button =
      view && gadget ? dynamic_cast<QAbstractButton*>(view->WidgetOf(gadget->id)) : nullptr;
  if (!button || !button->isEnabled()) return false;
  button->click();
  return true;
}

QString SameOrDifferent(std::size_t things) {
  if (things == 0) return "same as the scene";
  if (things == 1) return "differs in 1 thing";
  return QString("differs in %1 things").arg(QLocale().toString(qulonglong{things}));
}

}  // namespace desktop
