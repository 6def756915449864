// Search of an element's records for items of the scene. The link alone is an item's identity:
// names, types and the records' keys play no part.
#include "source/Stagemarks/SMDialog.h"
#include "source/Stagemarks/bulk/RecordFinder.h"
#include "source/Stagemarks/keys/ElementKeys.h"
#include "source/Stagemarks/recording/Walk.h"

namespace stagemarks {

namespace {

const BaseContainer* Part(const BaseContainer* element, LONG part) {
  return element ? element->GetContainerInstance(part) : nullptr;
}

Bool Holds(const BaseContainer* element, LONG part, LONG linkKey, const BaseList2D* item) {
  const BaseDocument* doc = GetActiveDocument();
  const BaseContainer* records = Part(element, part);
  if (!doc || !records || !item) return FALSE;
  for (LONG i = 0, id = 0; (id = records->GetIndexId(i)) != NOTOK; ++i) {
    if (records->GetContainer(id).GetLink(linkKey, doc) == item) return TRUE;
  }
  return FALSE;
}

// Links to those of `items`, each there once, that no record links to, under 0, 1, 2 ... in their
// order.
BaseContainer WithoutRecord(const Items& items, const BaseContainer* records, LONG linkKey,
                            const BaseDocument* doc) {
  std::vector<Bool> known(items.size());
  ItemIndex index(items);
  const LONG count = records ? records->GetCount() : 0;
  for (LONG i = 0; i < count; ++i) {
    const std::size_t item =
        index.Find(records->GetContainer(records->GetIndexId(i)).GetLink(linkKey, doc));
    if (item != ItemIndex::kNone) known[item] = TRUE;
  }
  BaseContainer links;
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (!known[i]) links.SetLink(links.GetCount(), items[i]);
  }
  return links;
}

}  // namespace

Bool SMDialog::SearchElementForObject(BaseContainer* element, BaseObject* op) const {
  return Holds(element, kObjects, kObjectLink, op);
}

Bool SMDialog::SearchElementForTag(BaseContainer* element, BaseTag* tag) const {
  return Holds(element, kTags, kTagLink, tag);
}

Bool SMDialog::SearchElementForLayer(BaseContainer* element, LayerObject* layer) const {
  return Holds(element, kLayers, kLayerLink, layer);
}

BaseContainer SMDialog::GetNewObjects(BaseContainer* element) const {
  const BaseDocument* doc = GetActiveDocument();
  Items objects;
  for (BaseObject* op = doc ? doc->GetFirstObject() : nullptr; op; op = NextInOrder(op))
    objects.push_back(op);
  return WithoutRecord(objects, Part(element, kObjects), kObjectLink, doc);
}

BaseContainer SMDialog::GetNewTags(BaseContainer* element) const {
  const BaseDocument* doc = GetActiveDocument();
  Items tags;
  for (BaseObject* op = doc ? doc->GetFirstObject() : nullptr; op; op = NextInOrder(op)) {
    for (BaseTag* tag = op->GetFirstTag(); tag; tag = tag->GetNext()) tags.push_back(tag);
  }
  return WithoutRecord(tags, Part(element, kTags), kTagLink, doc);
}

BaseContainer SMDialog::GetNewLayers(BaseContainer* element) const {
  const BaseDocument* doc = GetActiveDocument();
  GeListHead* root = doc ? doc->GetLayerObjectRoot() : nullptr;
  Items layers;
  for (LayerObject* layer = root ? static_cast<LayerObject*>(root->GetFirst()) : nullptr; layer;
       layer = NextInOrder(layer)) {
    layers.push_back(layer);
  }
  return WithoutRecord(layers, Part(element, kLayers), kLayerLink, doc);
}

}  // namespace stagemarks
