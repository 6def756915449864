#include "source/Stagemarks/SMDialog.h"

namespace stagemarks {

SMDialog::SMDialog()
    : recordStore_(kRecordStore), listStore_(kListStore), preferences_(kPreferences) {
  options_.fill(1);
  preferences_.SetBool(kChoiceSaved, FALSE);
  WriteOptions(preferences_);
  if (const BaseContainer* kept = GetWorldPluginData(kPreferences)) {
    defaultPreferences_ = *kept;
  } else {
    defaultPreferences_.SetBool(kChoiceSaved, FALSE);
    WriteOptions(defaultPreferences_);
  }
}

SMDialog::~SMDialog() = default;

LONG SMDialog::Message(const BaseContainer& msg, BaseContainer& result) {
  return GeDialog::Message(msg, result);
}

}  // namespace stagemarks
