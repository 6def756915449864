// "Set Selected Layers" and "Set Render Camera on Checked Elements".
#include "source/Stagemarks/SMDialog.h"
#include "source/Stagemarks/bulk/CheckedElements.h"
#include "source/Stagemarks/bulk/RecordFinder.h"
#include "source/Stagemarks/keys/ElementKeys.h"
#include "source/Stagemarks/keys/Messages.h"
#include "source/Stagemarks/recording/Records.h"

namespace stagemarks {

namespace {

Items ResolveAll(const BaseContainer& links, const BaseDocument* doc) {
  Items items;
  for (LONG i = 0, id = 0; (id = links.GetIndexId(i)) != NOTOK; ++i)
    items.push_back(links.GetLink(id, doc));
  return items;
}

// False at the first layer that is gone; those before it are written.
Bool WriteLayers(BaseContainer& records, const Items& layers, const BaseDocument* doc) {
  const RecordFinder finder(records, kLayerLink, doc, layers);
  FreeKeys keys(records);
  for (std::size_t i = 0; i < layers.size(); ++i) {
    const BaseList2D* layer = layers[i];
    if (!layer) return FALSE;
    const LONG position = finder.Position(i);
    if (position != NOTOK) {
      const LONG key = records.GetIndexId(position);
      BaseContainer record = records.GetContainer(key);
      WriteLayerFlags(record, *layer, doc);
      records.SetContainer(key, record);
    } else {
      const LONG key = keys.Next();
      records.SetContainer(key, LayerRecord(*layer, doc, key));
    }
  }
  return TRUE;
}

}  // namespace

Bool SMDialog::SetLayersOnCheckedElements() {
  const BaseContainer checked = GetCheckedElements();
  BaseDocument* doc = GetActiveDocument();
  BaseContainer* store = doc ? doc->GetDataInstance()->GetContainerInstance(kRecordStore) : nullptr;
  if (!store) return FALSE;
  listStore_ = doc->GetDataInstance()->GetContainer(kListStore);
  const Items selected = ResolveAll(GetSelectedLayers(), doc);
  const Bool done =
      CheckedElements(*store, checked, listStore_).ForEach([&](BaseContainer& element) {
        BaseContainer* layers = element.GetContainerInstance(kLayers);
        return layers && WriteLayers(*layers, selected, doc);
      });
  if (done) doc->SetChanged();
  return done;
}

// Leaves the document's "changed" as it is.
Bool SMDialog::SetCameraOnCheckedElements() {
  const BaseContainer checked = GetCheckedElements();
  BaseDocument* doc = GetActiveDocument();
  BaseContainer* store = doc ? doc->GetDataInstance()->GetContainerInstance(kRecordStore) : nullptr;
  const BaseObject* camera = doc ? doc->GetActiveObject() : nullptr;
  if (!store || !camera || camera->GetType() != Ocamera) {
    MessageDialog(text::kCameraNeeded);
    return FALSE;
  }
  listStore_ = doc->GetDataInstance()->GetContainer(kListStore);
  return CheckedElements(*store, checked, listStore_).ForEach([&](BaseContainer& element) {
    BaseContainer* recorded = element.GetContainerInstance(kCamera);
    if (recorded) recorded->SetLink(kCameraLink, camera);
    return recorded != nullptr;
  });
}

}  // namespace stagemarks
