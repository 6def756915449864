// The button "Record Element": from the name field to the stored element.
#include "source/Stagemarks/SMDialog.h"
#include "source/Stagemarks/keys/ElementKeys.h"
#include "source/Stagemarks/keys/Gadgets.h"
#include "source/Stagemarks/keys/Messages.h"

namespace stagemarks {

// Where memory for a preview is lacking, the element and its row are recorded all the same.
Bool SMDialog::RecordElement() {
  GetString(kNameField, elementName_);
  if (!elementName_.Content()) {
    MessageDialog(text::kNameNeeded);
    return TRUE;
  }
  BaseDocument* doc = GetActiveDocument();
  if (!doc) return FALSE;
  RefreshStores(*doc);
  FreezeOptions(*doc);
  const Bool overwrite = CheckForDupSMNames(elementName_);
  if (overwrite && !QuestionDialog(text::kOverwrite)) return FALSE;
  elementId_ = overwrite ? GetStagemarkID(elementName_) : GetFirstAvailableID();
  RecordCategories();
  AssembleElement();
  if (overwrite) DeleteStagemark(elementName_);
  StoreElement(*doc);
  const Bool whole = !generatePreview_ || RecordPreview(*doc);
  StatusClear();
  UpdateSMList();
  doc->Message(MSG_UPDATE);
  EventAdd();
  return whole;
}

// From its first recording on, a document keeps the options that were in force then.
void SMDialog::FreezeOptions(BaseDocument& doc) {
  preferences_ = doc.GetDataInstance()->GetContainer(kPreferences);
  if (preferences_.GetBool(kChoiceSaved)) return;
  WriteOptions(preferences_);
  preferences_.SetBool(kChoiceSaved, TRUE);
  doc.GetDataInstance()->SetContainer(kPreferences, preferences_);
  preferencesSaved_ = 1;
}

// A category whose option is off is not touched: its work container goes on holding what was
// recorded or left there.
void SMDialog::RecordCategories() {
  if (IsOn(Option::RenderSettings)) {
    StatusSetText(text::kSavingRender);
    RecordRenderSettings();
  }
  StatusSetText(text::kSavingObjects);
  RecordObjectAndTagSettings();
  if (IsOn(Option::ActiveCamera)) {
    StatusSetText(text::kSavingCamera);
    RecordCameraSettings();
  }
  if (IsOn(Option::Layers)) {
    StatusSetText(text::kSavingLayers);
    RecordLayerSettings();
  }
  StatusSetText(text::kSavingDate);
  RecordDateTime();
}

Bool SMDialog::RecordDateTime() {
  LocalFileTime now;
  GeGetCurrentTime(now);
  dateBc_.SetLong(kYear, now.year);
  dateBc_.SetLong(kMonth, now.month);
  dateBc_.SetLong(kDay, now.day);
  dateBc_.SetLong(kHour, now.hour);
  dateBc_.SetLong(kMinute, now.minute);
  dateBc_.SetLong(kSecond, now.second);
  return TRUE;
}

void SMDialog::AssembleElement() {
  recordBc_.FlushAll();
  recordBc_.SetId(elementId_);
  recordBc_.SetString(kName, elementName_);
  recordBc_.SetContainer(kRender, renderBc_);
  recordBc_.SetContainer(kLayers, layersBc_);
  recordBc_.SetContainer(kCamera, cameraBc_);
  recordBc_.SetContainer(kObjects, objectsBc_);
  recordBc_.SetContainer(kTags, tagsBc_);
  recordBc_.SetContainer(kDate, dateBc_);

  listEntryBc_.FlushAll();
  listEntryBc_.SetId(elementId_);
  listEntryBc_.SetString(kName, elementName_);
  listEntryBc_.SetContainer(kDate, dateBc_);
}

void SMDialog::StoreElement(BaseDocument& doc) {
  recordStore_.SetContainer(elementId_, recordBc_);
  listStore_.SetContainer(elementId_, listEntryBc_);
  WriteStores(doc);
  MarkCurrent(doc, elementId_);
}

Bool SMDialog::RecordPreview(const BaseDocument& doc) {
  StatusSetText(text::kGeneratingPreview);
  if (!doc.GetDocumentPath().Content()) {
    MessageDialog(text::kSaveBeforePreview);
    return TRUE;
  }
  const Filename folder = GetSMfilePath();
  if (!GeFExist(folder, TRUE)) GeFCreateDir(folder);
  return GenerateBitmapPreview(folder);
}

void SMDialog::ClearWorkContainers() {
  for (BaseContainer* work : {&recordBc_, &listEntryBc_, &dateBc_, &renderBc_, &layersBc_,
                              &objectsBc_, &cameraBc_, &tagsBc_}) {
    work->FlushAll();
  }
  frameFrom_ = frameTo_ = 0;
  objectCount_ = tagCount_ = 0;
}

}  // namespace stagemarks
