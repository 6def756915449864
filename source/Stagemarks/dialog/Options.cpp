#include "source/Stagemarks/SMDialog.h"

namespace stagemarks {

// The document's own choice where it has one, else the user's defaults.
void SMDialog::UpdateSMPreferences() {
  options_.fill(1);
  preferencesSaved_ = 0;
  const BaseDocument* doc = GetActiveDocument();
  if (!doc) return;
  preferences_ = doc->GetDataInstance()->GetContainer(kPreferences);
  preferencesSaved_ = preferences_.GetLong(kChoiceSaved);
  const BaseContainer& choice = preferencesSaved_ == 1 ? preferences_ : defaultPreferences_;
  for (const OptionRow& row : kOptions) {
    const Bool on = choice.GetBool(row.id);
    options_[IndexOf(row.option)] = on ? 1 : 0;
    MenuInitString(row.id, TRUE, on);
  }
}

// "Objects" never reaches the document's own choice: that one stays as the document's first
// recording froze it, and the next rebuild of the options shows it again.
Bool SMDialog::ToggleOption(const OptionRow& row) {
  LONG& flag = options_[IndexOf(row.option)];
  flag = flag == 1 ? 0 : 1;
  BaseDocument* doc = GetActiveDocument();
  if (!doc) return FALSE;
  preferences_ = doc->GetDataInstance()->GetContainer(kPreferences);
  if (row.option != Option::Objects) preferences_.SetBool(row.id, flag == 1);
  defaultPreferences_.SetBool(row.id, flag == 1);
  doc->GetDataInstance()->SetContainer(kPreferences, preferences_);
  MenuInitString(row.id, TRUE, flag == 1);
  return TRUE;
}

// The note "saved" goes along as the dialog has it; nobody reads it from the defaults.
void SMDialog::SaveDefaultPreferences() {
  defaultPreferences_.SetBool(kChoiceSaved, preferencesSaved_ == 1);
  WriteOptions(defaultPreferences_);
  SetWorldPluginData(kPreferences, defaultPreferences_, FALSE);
}

void SMDialog::WriteOptions(BaseContainer& target) const {
  for (const OptionRow& row : kOptions) target.SetBool(row.id, IsOn(row.option));
}

}  // namespace stagemarks
