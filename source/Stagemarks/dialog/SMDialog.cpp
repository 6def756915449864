// The dialog's life and its one event handler, which decides who does the work and does none
// itself.
#include "source/Stagemarks/SMDialog.h"
#include "source/Stagemarks/keys/FileNames.h"
#include "source/Stagemarks/keys/Gadgets.h"
#include "source/Stagemarks/keys/Messages.h"

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

// The host hears of one result only: that a recording was refused.
Bool SMDialog::Command(LONG id, const BaseContainer& msg) {
  if (!GetActiveDocument()) return FALSE;
  ReadFields();
  if (msg.GetLong(BFM_ACTION_ID) == kList) ShowSelected();
  if (const OptionRow* option = FindOption(id)) return ToggleOption(*option);
  if (id == kRecord) return RecordElement();
  Run(id);
  return TRUE;
}

void SMDialog::Run(LONG id) {
  struct Action {
    LONG id;
    void (*run)(SMDialog& dialog);
  };
  static constexpr Action kActions[] = {
      {kLoad, [](SMDialog& dialog) { dialog.LoadSelected(); }},
      {kDelete, [](SMDialog& dialog) { dialog.DeleteSelected(); }},
      {kRename, [](SMDialog& dialog) { dialog.RenameSelected(); }},
      {kGenerateFiles, [](SMDialog& dialog) { dialog.GenerateFiles(); }},
      {kCheckAll, [](SMDialog& dialog) { dialog.ChangeChecks(Checks::All); }},
      {kUncheckAll, [](SMDialog& dialog) { dialog.ChangeChecks(Checks::None); }},
      {kInvertChecked, [](SMDialog& dialog) { dialog.ChangeChecks(Checks::Inverted); }},
      {kUpdateChecked, [](SMDialog& dialog) { dialog.UpdateCheckedElements(); }},
      {kSetObjects, [](SMDialog& dialog) { dialog.SetObjectsOnCheckedElements(); }},
      {kSetTags, [](SMDialog& dialog) { dialog.SetTagsAndForget(); }},
      {kSetLayers, [](SMDialog& dialog) { dialog.SetLayersOnCheckedElements(); }},
      {kSetCamera, [](SMDialog& dialog) { dialog.SetCameraOnCheckedElements(); }},
      {kDeleteChecked, [](SMDialog& dialog) { dialog.DeleteCheckedElements(); }},
      {kDeleteAll, [](SMDialog& dialog) { dialog.DeleteAllElements(); }},
      {kCleanMaterials, [](SMDialog& dialog) { dialog.CleanMEdit(); }},
      {kSaveDefaults, [](SMDialog& dialog) { dialog.SaveDefaultPreferences(); }},
      {kHelp, [](SMDialog& dialog) { dialog.ShowHelp(); }},
      {kAbout, [](SMDialog& dialog) { dialog.ShowAbout(); }},
  };
  for (const Action& action : kActions) {
    if (action.id == id) return action.run(*this);
  }
}

// The fields as they stand: operations read them from here, never from the gadgets.
void SMDialog::ReadFields() {
  const auto isOn = [this](LONG box) {
    Bool on = FALSE;
    GetBool(box, on);
    return on ? 1 : 0;
  };
  selectedName_ = GetListSelection();
  generatePreview_ = isOn(kGeneratePreview);
  changeFrameRange_ = isOn(kChangeFrameRange);
  GetLong(kFrameFrom, frameFrom_);
  GetLong(kFrameTo, frameTo_);
}

void SMDialog::ShowSelected() {
  SetString(kNameField, selectedName_);
  ShowPreview(selectedName_);
}

// The work containers start anew only here: the next recording carries nothing over from before the
// load.
void SMDialog::LoadSelected() {
  if (!selectedName_.Content()) return;
  ClearWorkContainers();
  LoadStagemark(selectedName_);
  if (BaseDocument* doc = GetActiveDocument()) doc->SetChanged();
}

void SMDialog::DeleteSelected() {
  if (selectedName_.Content() && QuestionDialog(text::kDelete)) DeleteStagemark(selectedName_);
}

// The copy of the records is stale afterwards, and whoever reads it next takes it anew.
void SMDialog::SetTagsAndForget() {
  SetTagsOnCheckedElements();
  recordStore_.FlushAll();
}

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
