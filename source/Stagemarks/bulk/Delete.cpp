// "Delete Checked Elements" and "Delete All Elements": the same as deleting one name after the
// other, with the list rebuilt and the host told once for all of them.
#include "source/Stagemarks/SMDialog.h"
#include "source/Stagemarks/bulk/CheckedElements.h"
#include "source/Stagemarks/keys/ElementKeys.h"
#include "source/Stagemarks/keys/Messages.h"

namespace stagemarks {

void SMDialog::DeleteCheckedElements() {
  BaseDocument* doc = GetActiveDocument();
  if (!doc) return;
  DeleteElements(*doc, GetCheckedElements());
  RefreshAfterDeletion(*doc);
}

void SMDialog::DeleteAllElements() {
  BaseDocument* doc = GetActiveDocument();
  if (!doc) return;
  BaseContainer* data = doc->GetDataInstance();
  recordStore_ = data->GetContainer(kRecordStore);
  BaseContainer names;
  for (LONG i = 0; i < recordStore_.GetCount(); ++i) {
    names.SetString(i, recordStore_.GetContainer(recordStore_.GetIndexId(i)).GetString(kName));
  }
  DeleteElements(*doc, names);
  WriteStores(*doc);  // whole, as every operation leaves them, before they go
  data->RemoveData(kRecordStore);
  data->RemoveData(kListStore);
  RefreshAfterDeletion(*doc);
  OfferToDeleteSideFolder();
}

// IDs are found in an index, because names are looked up in a store that changes under way. Where
// the list store was never built the first deletion goes the whole way, which builds it.
void SMDialog::DeleteElements(BaseDocument& doc, const BaseContainer& names) {
  if (names.GetCount() == 0) return;
  listStore_ = doc.GetDataInstance()->GetContainer(kListStore);
  const Bool built = listStore_.FindIndex(kListBuilt) != NOTOK;
  if (!built) DeleteStagemark(names.GetIndexData(0).GetString());
  ElementNames index(listStore_);
  for (LONG i = built ? 0 : 1; i < names.GetCount(); ++i) {
    const String name = names.GetIndexData(i).GetString();
    const LONG element = index.Find(name);
    EmptyElement(doc, element);
    index.Empty(element);
    GeFKill(GetPreviewImage(name), 0);
  }
  doc.Message(MSG_UPDATE);
  EventAdd();
}

void SMDialog::RefreshAfterDeletion(BaseDocument& doc) {
  doc.SetChanged();
  UpdateSMList();
  list_.DataChanged();
}

void SMDialog::OfferToDeleteSideFolder() const {
  const Filename folder = GetSMfilePath();
  if (!GeFExist(folder, TRUE)) return;
  const String question =
      String(text::kDeleteFolderBegin) + folder.GetString() + text::kDeleteFolderEnd;
  if (QuestionDialog(question)) GeFKill(folder, 1);
}

}  // namespace stagemarks
