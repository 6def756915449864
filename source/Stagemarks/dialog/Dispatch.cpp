// The dialog's one event handler and the small branches of it.
#include "source/Stagemarks/SMDialog.h"
#include "source/Stagemarks/keys/Gadgets.h"
#include "source/Stagemarks/keys/Messages.h"

namespace stagemarks {

Bool SMDialog::Command(LONG id, const BaseContainer& msg) {
  if (!GetActiveDocument()) return FALSE;
  ReadFields();
  if (msg.GetLong(BFM_ACTION_ID) == kList) ShowSelected();
  if (const OptionRow* option = FindOption(id)) return ToggleOption(*option);
  switch (id) {
    case kLoad:
      LoadSelected();
      break;
    case kDelete:
      DeleteSelected();
      break;
    case kRename:
      RenameSelected();
      break;
    case kRecord:
      return RecordElement();
    case kGenerateFiles:
      GenerateFiles();
      break;
    case kCheckAll:
      ChangeChecks(Checks::All);
      break;
    case kUncheckAll:
      ChangeChecks(Checks::None);
      break;
    case kInvertChecked:
      ChangeChecks(Checks::Inverted);
      break;
    case kUpdateChecked:
      UpdateCheckedElements();
      break;
    case kSetObjects:
      SetObjectsOnCheckedElements();
      break;
    case kSetTags:
      SetTagsAndForget();
      break;
    case kSetLayers:
      SetLayersOnCheckedElements();
      break;
    case kSetCamera:
      SetCameraOnCheckedElements();
      break;
    case kDeleteChecked:
      DeleteCheckedElements();
      break;
    case kDeleteAll:
      DeleteAllElements();
      break;
    case kCleanMaterials:
      CleanMEdit();
      break;
    case kSaveDefaults:
      SaveDefaultPreferences();
      break;
    case kHelp:
      ShowHelp();
      break;
    case kAbout:
      ShowAbout();
      break;
    default:
      break;
  }
  return TRUE;
}

void SMDialog::ReadFields() {
  selectedName_ = GetListSelection();
  Bool on = FALSE;
  GetBool(kGeneratePreview, on);
  generatePreview_ = on ? 1 : 0;
  on = FALSE;
  GetBool(kChangeFrameRange, on);
  changeFrameRange_ = on ? 1 : 0;
  GetLong(kFrameFrom, frameFrom_);
  GetLong(kFrameTo, frameTo_);
}

void SMDialog::ShowSelected() {
  SetString(kNameField, selectedName_);
  ShowPreview(selectedName_);
}

// The work containers start anew only here: the next recording carries nothing over from before the load.
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

}  // namespace stagemarks
