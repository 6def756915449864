// Keeping in step with the host, and the menu "Help".
#include "source/Stagemarks/SMDialog.h"
#include "source/Stagemarks/keys/FileNames.h"
#include "source/Stagemarks/keys/Messages.h"

namespace stagemarks {

Bool SMDialog::CoreMessage(LONG id, const BaseContainer&) {
  if (id != EVMSG_CHANGE) return TRUE;
  ShowDefaultImage();
  UpdateSMList();
  UpdateSMPreferences();
  return TRUE;
}

void SMDialog::ShowHelp() const {
  Filename manual = GeGetPluginPath() + Filename(kHelpFolder) + Filename(kManual);
  manual.SetSuffix(kManualSuffix);
  if (GeFExist(manual)) GeExecuteFile(manual);
}

void SMDialog::ShowAbout() const {
  MessageDialog(String(text::kAbout) + RealToString(version_) + text::kCredit);
}

}  // namespace stagemarks
