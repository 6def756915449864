#include "source/Stagemarks/SMDialog.h"
#include "source/Stagemarks/keys/ElementKeys.h"
#include "source/Stagemarks/keys/Gadgets.h"
#include "source/Stagemarks/keys/Messages.h"

namespace stagemarks {

void SMDialog::RenameSelected() {
  BaseDocument* doc = GetActiveDocument();
  if (!doc || !selectedName_.Content()) return;
  RefreshStores(*doc);
  String name;
  GetString(kNameField, name);
  if (!name.Content()) {
    MessageDialog(text::kNameNeeded);
    return;
  }
  RenameElement(*doc, GetStagemarkID(selectedName_), name);
  UpdateSMList();
  GeFRename(GetPreviewImage(selectedName_), GetPreviewImage(name));
  doc->Message(MSG_UPDATE);
  EventAdd();
}

// The other way round than a recording: the list first.
void SMDialog::RenameElement(BaseDocument& doc, LONG element, const String& name) {
  BaseContainer record = recordStore_.GetContainer(element);
  BaseContainer entry = listStore_.GetContainer(element);
  if (BaseList2D* settings = record.GetContainer(kRender).GetLink(kRenderLink, &doc))
    settings->SetName(name);
  record.SetString(kName, name);
  entry.SetString(kName, name);
  recordStore_.SetContainer(element, record);
  listStore_.SetContainer(element, entry);
  BaseContainer& data = *doc.GetDataInstance();
  data.SetContainer(kListStore, listStore_);
  data.SetContainer(kRecordStore, recordStore_);
  doc.SetChanged();
}

}  // namespace stagemarks
