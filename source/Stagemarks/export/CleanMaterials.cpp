// "Clean Material Editor": deletes every material that no recorded texture tag uses. What the scene
// itself uses does not count: the command is there to throw away all that no recorded state needs.
#include <unordered_set>
#include <vector>

#include "source/Stagemarks/SMDialog.h"
#include "source/Stagemarks/keys/ElementKeys.h"

namespace stagemarks {

namespace {

using Materials = std::unordered_set<const BaseMaterial*>;

// Adds the materials that one element's texture tag records name. Records are looked up under 0, 1,
// 2 ..., as many as there are; one whose tag or material is gone adds nothing.
void AddUsed(const BaseContainer& tags, const BaseDocument* doc, Materials& used) {
  const LONG count = tags.GetCount();
  for (LONG key = 0; key < count; ++key) {
    const BaseContainer record = tags.GetContainer(key);
    const BaseList2D* tag = record.GetLink(kTagLink, doc);
    if (!tag || tag->GetType() != Ttexture) continue;
    if (const BaseMaterial* material = record.GetMaterialLink(kMaterialLink, doc))
      used.insert(material);
  }
}

// False when there is no element; an emptied record is none.
Bool CollectUsed(const BaseContainer& store, const BaseDocument* doc, Materials& used) {
  Bool any = FALSE;
  for (LONG i = 0, id = 0; (id = store.GetIndexId(i)) != NOTOK; ++i) {
    const BaseContainer record = store.GetContainer(id);
    if (record.GetCount() == 0) continue;
    any = TRUE;
    AddUsed(record.GetContainer(kTags), doc, used);
  }
  return any;
}

std::vector<BaseMaterial*> Unused(const BaseDocument& doc, const Materials& used) {
  std::vector<BaseMaterial*> unused;
  for (BaseMaterial* material = doc.GetFirstMaterial(); material; material = material->GetNext()) {
    if (used.count(material) == 0) unused.push_back(material);
  }
  return unused;
}

}  // namespace

Bool SMDialog::CleanMEdit() {
  BaseDocument* doc = GetActiveDocument();
  if (!doc) return FALSE;
  Materials used;
  const Bool any = CollectUsed(doc->GetDataInstance()->GetContainer(kRecordStore), doc, used);
  if (!any || !doc->GetFirstMaterial()) return FALSE;
  StopAllThreads();
  doc->StartUndo();
  for (BaseMaterial* material : Unused(*doc, used)) {
    doc->AddUndo(UNDO_DELETE, material);
    BaseMaterial::Free(material);
  }
  doc->EndUndo();
  EventAdd();
  doc->SetChanged();
  return TRUE;
}

}  // namespace stagemarks
